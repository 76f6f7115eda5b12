// A member's address that is not the member: it passes on what comes, or most of it.
#pragma once

#include "platform/net/udp_socket.h"

#include <atomic>
#include <netinet/in.h>
#include <poll.h>
#include <random>
#include <string>
#include <sys/socket.h>
#include <thread>

/// Receives datagrams at `from` and sends them on to `to` (network byte order),
/// both at the same port, dropping a share of them chosen at random.
class QD_Relay {
public:
    QD_Relay(uint32_t from, uint32_t to, int port, unsigned seed) :
        fd_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)),
        random_(seed)
    {
        to_.sin_family = AF_INET;
        to_.sin_port = htons(static_cast<uint16_t>(port));
        to_.sin_addr.s_addr = to;
        bound_ = qd_bind(fd_.get(), from, static_cast<uint16_t>(port)) == 0;
        thread_ = std::thread([this] { run(); });
    }
    ~QD_Relay()
    {
        going_ = false;
        thread_.join();
    }

    bool bound() const { return bound_; }

    /// From now on so many in a hundred are dropped.
    void drop(int percent) { percent_ = percent; }

    int passed() const { return passed_; }
    int dropped() const { return dropped_; }

private:
    void run()
    {
        std::string datagram(65536, '\0');
        while (going_) {
            pollfd waiting {fd_.get(), POLLIN, 0};
            if (::poll(&waiting, 1, 10) <= 0)
                continue;
            const ssize_t n = ::recv(fd_.get(), datagram.data(), datagram.size(), 0);
            if (n <= 0)
                continue;
            if (static_cast<int>(random_() % 100) < percent_) {
                ++dropped_;
                continue;
            }
            ++passed_;
            ::sendto(fd_.get(), datagram.data(), static_cast<size_t>(n), 0,
                reinterpret_cast<sockaddr*>(&to_), sizeof to_);
        }
    }

    QD_Fd fd_;
    sockaddr_in to_ {};
    std::mt19937 random_;
    bool bound_ = false;
    std::atomic<int> percent_ = 0;
    std::atomic<int> passed_ = 0;
    std::atomic<int> dropped_ = 0;
    std::atomic<bool> going_ = true;
    std::thread thread_;
};
