// Which packets have come before.
#pragma once

#include "media/base/rtp_header.h"
#include "platform/base/clock.h"

#include <algorithm>
#include <array>

/// Remembers one sender's newest packets. A network may deliver a packet twice;
/// it then has the same number, type and time of sending, which that of a member
/// who starts again from 0 has not. One thread uses it.
class QD_Repeats {
public:
    /// A packet counts as the same for so long.
    static constexpr std::chrono::seconds MEMORY {1};

    /// Whether such a packet came within MEMORY before `now`; it is remembered.
    bool seen(const rtp_fix_header& header, QD_Clock::Time now)
    {
        const bool again = std::any_of(packets_.begin(), packets_.end(), [&](const Packet& one) {
            return one.seq == header.seq && one.ts == header.ts && one.pt == header.pt
                && now - one.came < MEMORY && one.came != QD_Clock::Time();
        });
        packets_[next_] = {header.seq, header.ts, header.pt, now};
        next_ = (next_ + 1) % packets_.size();
        return again;
    }

private:
    struct Packet {
        uint16_t seq = 0;
        uint32_t ts = 0;
        unsigned pt = 0;
        QD_Clock::Time came {};
    };
    std::array<Packet, 16> packets_; // ten come in a second
    size_t next_ = 0;
};
