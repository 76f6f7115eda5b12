// GSM 06.10 full rate speech coding, a packet at a time.
#pragma once

#include "platform/base/mutex.h"

#include <cstdint>
#include <gsm/gsm.h>
#include <memory>
#include <span>

/// One coder and decoder state for everything, guarded for the length of a
/// packet: the frames of one packet stay together. Any thread.
class QD_Gsm_Codec {
public:
    static constexpr size_t SAMPLES = 800;     // five frames of 160
    static constexpr size_t PACKET_SIZE = 165; // five frames of 33 bytes

    QD_Gsm_Codec() : state_(gsm_create()) {}

    void encode(std::span<const short, SAMPLES> in, std::span<uint8_t, PACKET_SIZE> out)
        QD_EXCLUDES(mutex_);
    void decode(std::span<const uint8_t, PACKET_SIZE> in, std::span<short, SAMPLES> out)
        QD_EXCLUDES(mutex_);

private:
    struct Destroy {
        void operator()(gsm state) const { gsm_destroy(state); }
    };
    QD_Mutex mutex_;
    std::unique_ptr<gsm_state, Destroy> state_ QD_GUARDED_BY(mutex_);
};
