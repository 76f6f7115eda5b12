// Loopback addresses of this test process's own, so that tests can run side by side.
#pragma once

#include <arpa/inet.h>
#include <cstdlib>
#include <string>
#include <unistd.h>

/// Address number `n` (1..254) of this process, dotted.
inline std::string qd_test_address(int n)
{
    const int pid = getpid();
    return "127." + std::to_string(64 + pid % 128) + "." + std::to_string(pid / 128 % 256) + "."
        + std::to_string(n);
}

/// The same in network byte order.
inline uint32_t qd_test_host(int n) { return inet_addr(qd_test_address(n).c_str()); }

/// Makes address 1 the local one; before anything asks for it.
inline void qd_use_test_address() { setenv("QD_LOCAL_ADDRESS", qd_test_address(1).c_str(), 1); }
