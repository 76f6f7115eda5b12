// A member's address that is not the member: it passes on what comes, as a bad network does.
#pragma once

#include "tests/support/udp_peer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <deque>
#include <mutex>
#include <optional>
#include <random>
#include <thread>
#include <utility>
#include <vector>

/// One media datagram on its way.
struct QD_Passing {
    std::chrono::steady_clock::time_point when;
    unsigned seq;
    int length;        // of the payload
    std::string front; // the first 12 bytes of the payload
};

/// What passes now; `datagram` has a whole header.
inline QD_Passing qd_passing(const std::string& datagram)
{
    const auto byte = [&](size_t at) { return unsigned {static_cast<uint8_t>(datagram[at])}; };
    return {std::chrono::steady_clock::now(), byte(2) << 8 | byte(3),
        static_cast<int>(datagram.size()) - 12, datagram.substr(12, 12)};
}

/// What a relay does to what passes; nothing by default. Shares are percent of
/// the datagrams, each chosen at random.
struct QD_Impairment {
    int loss = 0;
    int delay_ms = 0;  // of all
    int jitter_ms = 0; // of each 0 to so much more; none overtakes another
    int reordered = 0; // each of these follows the one behind it, however late that comes
    int duplicated = 0;
};

/// Receives datagrams at `from` and sends them on to `to` (network byte order),
/// both at the same port, impaired as it is told. The same seed makes the same choices.
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

    /// From now on, instead of what was; what is on its way keeps its time.
    void impair(const QD_Impairment& impairment)
    {
        std::lock_guard hold(mutex_);
        impairment_ = impairment;
    }
    void drop(int percent) { impair({.loss = percent}); }

    /// Nothing that comes in the time from now passes.
    void cut(std::chrono::milliseconds time)
    {
        std::lock_guard hold(mutex_);
        cut_until_ = Clock::now() + time;
    }
    /// All that comes in the time from now passes at its end.
    void stall(std::chrono::milliseconds time)
    {
        std::lock_guard hold(mutex_);
        stalled_until_ = Clock::now() + time;
    }

    int dropped() const { return dropped_; }

    /// All that was passed on so far, in order.
    std::vector<QD_Passing> log() const
    {
        std::lock_guard hold(mutex_);
        return log_;
    }

private:
    using Clock = std::chrono::steady_clock;
    struct Waiting {
        Clock::time_point due;
        std::string datagram;
    };

    void run()
    {
        while (going_) {
            const std::string datagram = peer_.receive(queue_.empty() ? 10 : 1);
            std::lock_guard hold(mutex_);
            if (!datagram.empty())
                take(datagram);
            while (!queue_.empty() && queue_.front().due <= Clock::now()) {
                pass(queue_.front().datagram);
                queue_.pop_front();
            }
        }
    }

    bool chosen(int percent) { return static_cast<int>(random_() % 100) < percent; }

    void take(const std::string& datagram)
    {
        if (chosen(impairment_.loss) || Clock::now() < cut_until_) {
            ++dropped_;
            return;
        }
        if (!overtaken_ && chosen(impairment_.reordered)) {
            overtaken_ = datagram;
            return;
        }
        enqueue(datagram);
        if (chosen(impairment_.duplicated))
            enqueue(datagram);
        if (overtaken_)
            enqueue(*std::exchange(overtaken_, std::nullopt));
    }

    void enqueue(const std::string& datagram)
    {
        const int jitter = std::uniform_int_distribution(0, impairment_.jitter_ms)(random_);
        auto due = std::max(stalled_until_,
            Clock::now() + std::chrono::milliseconds(impairment_.delay_ms + jitter));
        if (!queue_.empty())
            due = std::max(due, queue_.back().due);
        queue_.push_back({due, datagram});
    }

    void pass(const std::string& datagram)
    {
        if (datagram.size() >= 12)
            log_.push_back(qd_passing(datagram));
        peer_.send(datagram, to_);
    }

    const QD_Udp_Peer peer_;
    const uint32_t to_;
    std::mt19937 random_;
    std::deque<Waiting> queue_;
    std::optional<std::string> overtaken_;
    std::atomic<int> dropped_ = 0;
    mutable std::mutex mutex_; // of what follows
    QD_Impairment impairment_;
    Clock::time_point cut_until_;
    Clock::time_point stalled_until_;
    std::vector<QD_Passing> log_;
    std::atomic<bool> going_ = true;
    std::thread thread_;
};
