// IPv4 addresses of hosts.
#pragma once

#include <cstdint>
#include <netinet/in.h>
#include <string>
#include <string_view>

/// A host's IPv4 address: a value in host byte order inside, so that comparing and
/// masking need no thought; wire() and socket_address() are the only ways to network
/// byte order. The default is "none" (0.0.0.0), which no host has.
class QD_Address {
public:
    constexpr QD_Address() = default;

    /// 0x7f000002 is 127.0.0.2.
    static constexpr QD_Address from_number(uint32_t number) { return QD_Address(number); }

    /// From the network byte order of `in_addr::s_addr`.
    static QD_Address from_wire(uint32_t wire) { return QD_Address(ntohl(wire)); }

    /// From dotted text ("127.0.0.2"); none if `text` is not an address.
    static QD_Address from_text(std::string_view text);

    constexpr uint32_t number() const { return number_; }
    uint32_t wire() const { return htonl(number_); }
    std::string text() const;

    /// As the socket calls take it; `port` in host order, 0 for any.
    sockaddr_in socket_address(uint16_t port) const;

    constexpr explicit operator bool() const { return number_ != 0; }
    constexpr bool is_loopback() const { return number_ >> 24 == 127; }

    /// Whether a single host can have it, whatever the network: not 0/8, multicast,
    /// reserved, broadcast, nor the ends of the loopback range.
    constexpr bool is_host() const
    {
        return number_ >> 24 != 0 && number_ >> 28 < 14 && number_ != 0x7f000000
            && number_ != 0x7fffffff;
    }

    constexpr auto operator<=>(const QD_Address&) const = default;

private:
    constexpr explicit QD_Address(uint32_t number) : number_(number) {}

    uint32_t number_ = 0;
};
