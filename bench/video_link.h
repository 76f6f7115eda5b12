// One sender and one receiver on a link without loss, in simulated time.
#pragma once

#include "bench/scenes.h"
#include "platform/vl/codec.h"

#include <optional>

struct QD_Bench_Link {
    const char* name;
    QD_Codec codec;
    double kbps;
    int fps;
};

/// What comes of a film. Everything but the bursts is taken once it has settled.
struct QD_Sent_Film {
    double psnr = 0; // mean over what the screen shows, QD_SCENE_HZ times a second
    double fps = 0;  // pictures sent
    double kbps = 0;
    double burst_kbps = 0;       // the fullest second of all, without its largest intra picture
    int largest = 0;             // bytes of a picture
    bool is_at_size_cap = false; // pictures could not have been larger, nor finer
};

/// Sends the film with the real coder and pacing: capture on schedule, code,
/// count, pause. With the quantiser that follows the link, or with a constant one.
QD_Sent_Film qd_send_film(const std::vector<QD_Bench_Picture>& film, const QD_Bench_Link& link,
    std::optional<double> constant);
