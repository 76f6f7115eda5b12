// Which of a machine's addresses is "the" address.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

/// What the choice is made from; addresses in network byte order, 0 for none.
struct QD_Address_Facts {
    const char* override_text = nullptr; // QD_LOCAL_ADDRESS, or null
    uint32_t host_name = 0;              // what the host name resolves to
    uint32_t route_source = 0;           // where packets to elsewhere leave from
    std::vector<uint32_t> interfaces;    // running ones, the loopback left out, in order
};

/// Asks the system. Waits for no name server: the host name is looked up in local files.
QD_Address_Facts qd_address_facts();

/// The override as an address; nothing if it is unset, no dotted address, or
/// not one a host can have (0.0.0.0, multicast, broadcast).
std::optional<uint32_t> qd_override_address(const char* text);

/// The address by the order that SOCK_Library::getlocalhostid documents.
uint32_t qd_choose_address(const QD_Address_Facts& facts);
