// A member's address that is not the member: it passes on what comes, or most of it.
#pragma once

#include "tests/support/udp_peer.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

/// One media datagram on its way.
struct QD_Passing {
    std::chrono::steady_clock::time_point when;
    unsigned seq;
    int length; // of the payload
};

/// What passes now; `datagram` has a whole header.
inline QD_Passing qd_passing(const std::string& datagram)
{
    const auto byte = [&](size_t at) { return unsigned {static_cast<uint8_t>(datagram[at])}; };
    return {std::chrono::steady_clock::now(), byte(2) << 8 | byte(3),
        static_cast<int>(datagram.size()) - 12};
}

/// Receives datagrams at `from` and sends them on to `to` (network byte order),
/// both at the same port, dropping a share of them chosen at random.
class QD_Relay {
public:
    QD_Relay(uint32_t from, uint32_t to, int port, unsigned seed) :
        peer_(from, port),
        to_(to),
        random_(seed),
        thread_([this] { run(); })
    {
    }
    ~QD_Relay()
    {
        going_ = false;
        thread_.join();
    }

    bool bound() const { return peer_.bound(); }

    /// From now on so many in a hundred are dropped.
    void drop(int percent) { percent_ = percent; }
    int dropped() const { return dropped_; }

    /// All that was passed on so far, in order.
    std::vector<QD_Passing> log() const
    {
        std::lock_guard hold(log_mutex_);
        return log_;
    }

private:
    void run()
    {
        while (going_) {
            const std::string datagram = peer_.receive(10);
            if (datagram.empty())
                continue;
            if (static_cast<int>(random_() % 100) < percent_) {
                ++dropped_;
                continue;
            }
            if (datagram.size() >= 12) {
                std::lock_guard hold(log_mutex_);
                log_.push_back(qd_passing(datagram));
            }
            peer_.send(datagram, to_);
        }
    }

    const QD_Udp_Peer peer_;
    const uint32_t to_;
    std::mt19937 random_;
    std::atomic<int> percent_ = 0;
    std::atomic<int> dropped_ = 0;
    mutable std::mutex log_mutex_;
    std::vector<QD_Passing> log_;
    std::atomic<bool> going_ = true;
    std::thread thread_;
};
