// A member's address that is not the member: it passes on what comes, or most of it.
#pragma once

#include "tests/support/udp_peer.h"

#include <atomic>
#include <random>
#include <thread>

/// Receives datagrams at `from` and sends them on to `to` (network byte order),
/// both at the same port, dropping a share of them chosen at random.
class QD_Relay {
public:
    QD_Relay(uint32_t from, uint32_t to, int port) :
        peer_(from, port),
        to_(to),
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

private:
    void run()
    {
        std::minstd_rand random; // the same every time
        while (going_) {
            const std::string datagram = peer_.receive(10);
            if (datagram.empty())
                continue;
            if (static_cast<int>(random() % 100) < percent_)
                ++dropped_;
            else
                peer_.send(datagram, to_);
        }
    }

    const QD_Udp_Peer peer_;
    const uint32_t to_;
    std::atomic<int> percent_ = 0;
    std::atomic<int> dropped_ = 0;
    std::atomic<bool> going_ = true;
    std::thread thread_; // the last: it uses the others
};
