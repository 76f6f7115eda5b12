// Loopback addresses of this test process's own, so that tests can run side by side.
#pragma once

#include "platform/net/udp_socket.h"

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

/// Binds a socket to a free port of 127.0.0.1 and returns the port.
inline int qd_bind_somewhere(int fd)
{
    sockaddr_in here {};
    socklen_t size = sizeof here;
    qd_bind(fd, htonl(INADDR_LOOPBACK), 0);
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&here), &size);
    return ntohs(here.sin_port);
}

/// Makes address 1 the local one; before anything asks for it.
inline void qd_use_test_address() { setenv("QD_LOCAL_ADDRESS", qd_test_address(1).c_str(), 1); }
