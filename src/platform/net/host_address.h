// IPv4 addresses as numbers in host order, and which of them a member can have.
#pragma once

#include <cstdint>
#include <netinet/in.h>
#include <string>
#include <string_view>

/// "127.0.0.2" of 0x7f000002, and back; 0 if `text` is no IPv4 address.
std::string qd_address_text(uint32_t address);
uint32_t qd_address_number(std::string_view text);

/// The same as the socket calls take it; `port` in host order, 0 for any.
sockaddr_in qd_socket_address(uint32_t address, uint16_t port);

/// Why `address` cannot be one member's own, whatever the network; "" if it can.
std::string qd_host_trouble(uint32_t address);

/// Whether both are loopback addresses or neither is: to every other machine a
/// loopback address means that machine itself.
bool qd_on_one_side(uint32_t address, uint32_t other);

/// Whether this machine has a way to send datagrams from `own` to `address`.
bool qd_is_reachable(uint32_t own, uint32_t address);
