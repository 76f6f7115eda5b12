#include "platform/net/host_address.h"

#include "platform/base/fd.h"

#include <arpa/inet.h>
#include <sys/socket.h>

namespace {

bool is_loopback(uint32_t address) { return address >> 24 == 127; }

}

std::string qd_address_text(uint32_t address)
{
    char text[INET_ADDRSTRLEN];
    const in_addr wire {htonl(address)};
    return ::inet_ntop(AF_INET, &wire, text, sizeof text);
}

uint32_t qd_address_number(std::string_view text)
{
    in_addr wire {};
    return ::inet_pton(AF_INET, std::string(text).c_str(), &wire) == 1 ? ntohl(wire.s_addr) : 0;
}

sockaddr_in qd_socket_address(uint32_t address, uint16_t port)
{
    sockaddr_in made {};
    made.sin_family = AF_INET;
    made.sin_addr.s_addr = htonl(address);
    made.sin_port = htons(port);
    return made;
}

std::string qd_host_trouble(uint32_t address)
{
    const bool multicast_or_beyond = address >> 28 >= 14; // with the broadcast address
    const bool ends_of_loopback = address == 0x7f000000 || address == 0x7fffffff;
    if (address >> 24 == 0 || multicast_or_beyond || ends_of_loopback)
        return qd_address_text(address) + " is not the address of one member";
    return "";
}

bool qd_on_one_side(uint32_t address, uint32_t other)
{
    return is_loopback(address) == is_loopback(other);
}

bool qd_is_reachable(uint32_t own, uint32_t address)
{
    // Connecting a datagram socket sends nothing; it fails without a route and
    // for a broadcast address.
    const sockaddr_in from = qd_socket_address(own, 0);
    const sockaddr_in to = qd_socket_address(address, 9);
    QD_Fd fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    return fd && ::bind(fd.get(), reinterpret_cast<const sockaddr*>(&from), sizeof from) == 0
        && ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0;
}
