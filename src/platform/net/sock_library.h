// Host addresses and names.
#pragma once

#include <cstddef>
#include <cstdint>

/// Addresses are IPv4 in network byte order, as the address functions return them.
class SOCK_Library {
public:
    /// Room for a host name or a dotted address with its end.
    static constexpr size_t NAME_SIZE = 256;

    /// This machine's address as others reach it, found once at the first call:
    /// QD_LOCAL_ADDRESS if set (a wrong value: one line on standard error, then
    /// as if unset); else the host name's address if an interface other than
    /// the loopback has it; else the address that packets to elsewhere leave
    /// from; else that of the first running interface; else 127.0.0.1. Any thread.
    static uint32_t getlocalhostid();

    /// The address that sockets bind to: the local one if QD_LOCAL_ADDRESS gave
    /// it, else 0 for all interfaces. Any thread.
    static uint32_t get_bind_address();

    /// The address of a host, by dotted address or name; 0 if it has none or
    /// none is found within a second. Any thread.
    static uint32_t gethostid(const char* name);

    /// Writes the host's name, or its dotted address as long as no name is
    /// known. Never waits: names are looked up by a thread of their own and
    /// serve later calls. Loopback addresses are never looked up. Any thread.
    static void gethostname(uint32_t address, char (&out)[NAME_SIZE]);

    /// Writes the dotted address. Any thread.
    static void getdotted(uint32_t address, char (&out)[NAME_SIZE]);
};
