// A TCP stream between two members, and what opens one.
#pragma once

#include "platform/net/fd.h"

#include <netinet/in.h>

/// Owns a connected stream socket, or none. One thread reads, one writes.
class SOCK_Stream {
public:
    SOCK_Stream() = default;
    explicit SOCK_Stream(QD_Fd fd) : fd_(std::move(fd)) {}

    /// Reads exactly n bytes. Returns n, 0 if the peer has closed, -1 on error.
    int recv_n(void* buf, int n);

    /// Writes exactly n bytes. Returns n, or -1 on error.
    int send_n(const void* buf, int n);

    /// Returns 0, also when there is nothing to close.
    int close();

    /// The descriptor, -1 for none.
    int get_handle() const { return fd_.get(); }

private:
    QD_Fd fd_;
};

/// Opens streams. Any thread.
class SOCK_Connector {
public:
    /// Connecting takes no longer than this.
    static constexpr int CONNECT_MS = 1000;

    /// Connects `stream` to `to`, from the local address if one was set for this
    /// program. Returns 0, or -1 with `stream` unchanged.
    int connect(SOCK_Stream* stream, const sockaddr_in* to);
};
