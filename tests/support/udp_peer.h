// A bare datagram socket that plays another member.
#pragma once

#include "platform/net/fd.h"
#include "platform/net/udp_socket.h"

#include <cstdint>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>

class QD_Udp_Peer {
public:
    /// Binds to an address in network byte order.
    QD_Udp_Peer(uint32_t host, int port) :
        fd_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)),
        port_(port)
    {
        bound_ = qd_bind(fd_.get(), host, static_cast<uint16_t>(port)) == 0;
    }

    bool bound() const { return bound_; }

    bool send(const std::string& datagram, uint32_t host) const
    {
        sockaddr_in to {};
        to.sin_family = AF_INET;
        to.sin_port = htons(static_cast<uint16_t>(port_));
        to.sin_addr.s_addr = host;
        return ::sendto(fd_.get(), datagram.data(), datagram.size(), 0,
                   reinterpret_cast<sockaddr*>(&to), sizeof to)
            == static_cast<ssize_t>(datagram.size());
    }

    /// The next datagram within the bound, "" if none comes.
    std::string receive(int milliseconds = 2000) const
    {
        pollfd waiting {fd_.get(), POLLIN, 0};
        if (::poll(&waiting, 1, milliseconds) <= 0)
            return "";
        std::string datagram(65536, '\0');
        const ssize_t n = ::recv(fd_.get(), datagram.data(), datagram.size(), 0);
        datagram.resize(n > 0 ? static_cast<size_t>(n) : 0);
        return datagram;
    }

private:
    QD_Fd fd_;
    int port_;
    bool bound_ = false;
};
