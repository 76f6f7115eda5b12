// A member that only listens: when it last heard from which host.
#pragma once

#include "tests/support/network.h"
#include "tests/support/seat.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <thread>

/// Joins by a companion whose client is nothing but a link, and takes the packets of sound itself.
/// Packets of silence, as a microphone gives that has stopped, do not count.
class QD_Soak_Ear {
public:
    using Clock = std::chrono::steady_clock;

    /// Lives at that host of the network and listens to those of 1 to `speakers`.
    QD_Soak_Ear(const QD_Test_Network& network, int host, int speakers, const std::string& broker) :
        speakers_(speakers)
    {
        seat_.start("join",
            {"soak", "--name", "ear", "--client", QD_FAKE_CLIENT, "--broker", "mqtt://" + broker},
            {}, network.at(static_cast<size_t>(host)));
        joined_ = seat_.says("ear@10.77.0." + std::to_string(host) + " has joined\n");
        thread_ = std::jthread([this, &network, host](const std::stop_token& stop) {
            network.enter(host);
            listen(stop);
        });
    }

    bool joined() const { return joined_; }

    /// From whom nothing has come since: their addresses, "" if all are heard.
    std::string silent_since(Clock::time_point when) const
    {
        const std::lock_guard hold(mutex_);
        std::string silent;
        for (int host = 1; host <= speakers_; ++host) {
            const auto last = last_.find(static_cast<uint32_t>(host));
            if (last == last_.end() || last->second <= when)
                silent += " 10.77.0." + std::to_string(host);
        }
        return silent;
    }

    /// Whether it ends well.
    bool leave() { return seat_.end() == 0; }

private:
    static constexpr ssize_t HEADER = 12;

    void listen(const std::stop_token& stop)
    {
        const QD_Fd fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        const sockaddr_in here {AF_INET, htons(12567), {htonl(INADDR_ANY)}, {}};
        ::bind(fd.get(), reinterpret_cast<const sockaddr*>(&here), sizeof here);
        while (!stop.stop_requested()) {
            pollfd readable {fd.get(), POLLIN, 0};
            if (::poll(&readable, 1, 20) <= 0)
                continue;
            char packet[2048];
            sockaddr_in from {};
            socklen_t size = sizeof from;
            const ssize_t got = ::recvfrom(
                fd.get(), packet, sizeof packet, 0, reinterpret_cast<sockaddr*>(&from), &size);
            if (got <= HEADER || !has_sound(packet[1], {packet + HEADER, packet + got}))
                continue;
            const std::lock_guard hold(mutex_);
            last_[ntohl(from.sin_addr.s_addr) & 0xff] = Clock::now();
        }
    }

    static bool has_sound(char type, const std::string& payload)
    {
        enum { ADPCM = 13, GSM = 14 };
        constexpr size_t GSM_FRAME = 33; // of silence all are the same
        if (type == GSM && payload.size() > GSM_FRAME)
            return payload.substr(GSM_FRAME) != payload.substr(0, payload.size() - GSM_FRAME);
        const size_t state = type == ADPCM ? 3 : 0;
        const unsigned loudness = type == ADPCM ? 0x77 : 0xff; // codes without their signs
        return std::any_of(
            payload.begin() + static_cast<ptrdiff_t>(std::min(state, payload.size())),
            payload.end(),
            [=](char one) { return (static_cast<unsigned char>(one) & loudness) != 0; });
    }

    const int speakers_;
    QD_Seat seat_;
    bool joined_ = false;
    mutable std::mutex mutex_;
    std::map<uint32_t, Clock::time_point> last_; // by the last number of the address
    std::jthread thread_;                        // goes first
};
