// The addresses 127.x.y.z of this machine, one for each member.
#pragma once

#include "platform/net/fd.h"

#include <cstdint>
#include <netinet/in.h>
#include <string>
#include <string_view>

/// "127.0.0.2" of 0x7f000002, and back; 0 if `text` is no IPv4 address.
std::string qd_address_text(uint32_t address);
uint32_t qd_address_number(std::string_view text);

/// The same as the socket calls take it; `port` in host order, 0 for any.
sockaddr_in qd_socket_address(uint32_t address, uint16_t port);

/// Claims an address among all conferences on this machine for as long as the
/// descriptor is held. None is returned if another conference holds it or a
/// program receives media there already.
QD_Fd qd_claim_address(uint32_t address);

/// Why `address` cannot be one member's own on this machine; "" if it can.
std::string qd_address_trouble(uint32_t address);
