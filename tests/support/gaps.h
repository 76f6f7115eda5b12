// How steadily somebody's packets come.
#pragma once

#include "tests/support/udp_peer.h"

#include <algorithm>
#include <chrono>

/// Counts the packets of one sender at a peer and measures the pauses between them.
class QD_Gaps {
public:
    using Clock = std::chrono::steady_clock;

    /// `sender` is a member id below 256. The peer outlives this.
    QD_Gaps(const QD_Udp_Peer& peer, int sender) : peer_(peer), sender_(static_cast<char>(sender))
    {
    }

    /// What waits already counts for nothing, nor does the time between two calls.
    void watch(Clock::duration time)
    {
        while (!peer_.receive(0).empty()) {}
        Clock::time_point last = Clock::now();
        for (const auto end = last + time; Clock::now() < end;) {
            const std::string packet = peer_.receive(50);
            const auto now = Clock::now();
            longest_ = std::max(longest_, now - last);
            if (packet.size() > 11 && packet[11] == sender_) {
                last = now;
                ++count_;
            }
        }
    }

    Clock::duration longest() const { return longest_; }
    int count() const { return count_; }

private:
    const QD_Udp_Peer& peer_;
    const char sender_;
    int count_ = 0;
    Clock::duration longest_ {};
};
