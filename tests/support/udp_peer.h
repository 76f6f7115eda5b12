// A bare datagram socket that plays another member.
#pragma once

#include "platform/net/udp_socket.h"

#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>

class QD_Udp_Peer {
public:
    /// Binds to an address in network byte order.
    QD_Udp_Peer(uint32_t host, int port) :
        fd_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)),
        port_(static_cast<uint16_t>(port)),
        bound_(qd_bind(fd_.get(), host, port_) == 0)
    {
    }

    bool bound() const { return bound_; }

    bool send(const std::string& datagram, uint32_t host) const
    {
        const sockaddr_in to {AF_INET, htons(port_), {host}, {}};
        return ::sendto(fd_.get(), datagram.data(), datagram.size(), 0,
                   reinterpret_cast<const sockaddr*>(&to), sizeof to)
            == static_cast<ssize_t>(datagram.size());
    }

    /// The next datagram within the bound, "" if none comes.
    std::string receive(int milliseconds = 2000) const
    {
        pollfd waiting {fd_.get(), POLLIN, 0};
        std::string datagram(65536, '\0');
        ssize_t n = 0;
        if (::poll(&waiting, 1, milliseconds) > 0)
            n = ::recv(fd_.get(), datagram.data(), datagram.size(), 0);
        datagram.resize(n > 0 ? static_cast<size_t>(n) : 0);
        return datagram;
    }

private:
    QD_Fd fd_;
    uint16_t port_;
    bool bound_;
};
