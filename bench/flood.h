// Strangers who send rubbish to one datagram port at a steady rate.
#pragma once

#include "platform/base/fd.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

/// What they send.
struct QD_Rubbish {
    enum Version { ANY, WRONG, RIGHT };
    size_t least = 0;      // bytes
    size_t most = 0;       // bytes
    Version version = ANY; // of the header
    bool mutated = false;  // made of real packets, whose size it has
    int sender = 0;        // the member it claims to be of, 0 for nobody who is there
};

/// Sends from several sockets, one at each address given, until it goes.
class QD_Flood {
public:
    /// `real` are packets for mutations. Addresses are in network byte order; what is
    /// sent is made beforehand. `rate` is in datagrams a second.
    QD_Flood(const std::vector<uint32_t>& from, uint32_t host, uint16_t port,
        const QD_Rubbish& rubbish, const std::vector<std::string>& real, double rate);
    ~QD_Flood();
    QD_Flood(const QD_Flood&) = delete;

    /// Datagrams and bytes that the system has taken so far. Any thread.
    long sent() const { return sent_; }
    long bytes() const { return bytes_; }

private:
    static constexpr size_t PACKETS = 2048;
    static constexpr size_t AT_ONCE = 64;

    void make(const QD_Rubbish& rubbish, const std::vector<std::string>& real);
    std::string packet(const QD_Rubbish& rubbish, const std::vector<std::string>& real);
    void run();
    void send_some(size_t count);

    const uint32_t host_;
    const uint16_t port_;
    const double rate_;
    std::minstd_rand random_ {1};
    std::vector<QD_Fd> sockets_;
    std::vector<std::string> packets_;
    size_t next_ = 0; // packet
    size_t next_socket_ = 0;
    std::atomic<long> sent_ = 0;
    std::atomic<long> bytes_ = 0;
    std::atomic<bool> going_ = true;
    std::thread thread_;
};
