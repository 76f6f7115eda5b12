// The addresses 127.x.y.z of this machine, one for each member.
#pragma once

#include "platform/base/fd.h"

#include <cstdint>
#include <string>

/// Claims an address among all conferences on this machine for as long as the
/// descriptor is held. None is returned if another conference holds it or a
/// program receives media there already.
QD_Fd qd_claim_address(uint32_t address);

/// Why `address` cannot be one member's own on this machine; "" if it can.
std::string qd_address_trouble(uint32_t address);
