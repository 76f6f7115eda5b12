// Reception figures of one medium of one member.
#pragma once

#include "media/base/rtp_header.h"

#include <array>
#include <cstdint>

/// Plain arithmetic without a lock: whoever shares one between threads guards
/// it (members keep theirs under the session lock). Times are milliseconds of
/// this class's own clock, taken on arrival; the packet's time stamp is not used.
class UserData {
public:
    static constexpr int RING_SIZE = 100;
    static constexpr unsigned WINDOW_MS = 5000;

    /// Milliseconds since the first reading in this process, modulo 2^32. Any thread.
    static unsigned get_time_stamp();

    /// The packet that makes the figures is not counted itself. `len` is its payload in bytes.
    UserData(const rtp_fix_header* hdr, int len, unsigned now = get_time_stamp());

    /// Counts one arriving frame of `len` payload bytes. Returns 1 if it was in
    /// order, 0 if it was counted as lost (its sequence number lies behind).
    int frame(const rtp_fix_header* hdr, int len, unsigned now = get_time_stamp());

    /// Per cent of all frames, whole numbers; 0 before the first frame.
    int getPercentLost() const { return percent(frames_lost); }
    int getPercentLate() const { return percent(frames_late); }

    /// Whole kbit/s and frames/s of the last five seconds, from at most the
    /// last 100 frames: beyond 20 frames/s both figures are too low.
    double getKbps(unsigned now = get_time_stamp()) const;
    double getFps(unsigned now = get_time_stamp()) const;

    /// Mean gap between arrivals less 100 ms; may be negative. 0.0 before the first frame.
    double getLatency() const;

    /// Starts counting afresh; the next frame counts as the first one.
    void reset();

    int frames_received = 0;
    int frames_lost = 0; // arrived behind a higher sequence number
    int frames_late = 0; // more than 300 and less than 1000 ms after the one before
    int bytes = 0;

private:
    int percent(int part) const;

    unsigned last_ts = 0;
    unsigned last_seq = 0;
    unsigned first_time = 0; // when counting began; kept, no figure needs it
    std::array<unsigned, RING_SIZE> timestamps {};
    std::array<int, RING_SIZE> sizes {};
    int pos = 0;
    int latency = 0;
};
