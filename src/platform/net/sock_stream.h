// A TCP stream between two members, and what opens one.
#pragma once

#include "platform/base/fd.h"

#include <cstddef>
#include <cstdint>
#include <netinet/in.h>
#include <span>
#include <vector>

/// Owns a connected stream socket with its two buffers, and never waits: what
/// has come is fetched into a store, what the peer does not take yet is queued.
/// Without a socket nothing comes and what is sent stays in the queue.
/// One thread uses it.
class SOCK_Stream {
public:
    /// A peer for whom more bytes than this would wait has failed.
    static constexpr size_t MAX_QUEUED = 256 << 10;

    SOCK_Stream() = default;

    /// Small messages go at once, and a peer whose machine has gone is noticed in two minutes.
    explicit SOCK_Stream(QD_Fd fd);

    /// Fetches until `n` bytes are in store, as far as they are there by now.
    /// Returns whether recv_n(n) has its result: they are, or no more will come.
    bool fetch(size_t n);

    /// What is in store. Valid until the next operation.
    std::span<const uint8_t> received() const { return in_; }

    /// Takes exactly n bytes. Returns n, 0 if the peer has closed before them,
    /// -1 on error or if they are not there yet.
    int recv_n(void* buf, int n);

    /// Writes exactly n bytes, by way of the queue. Returns n, or -1 once the
    /// stream is closed or has failed.
    int send_n(const void* buf, int n);

    /// Sends from the queue what the peer takes now. Returns 0, or -1 on error.
    int flush();

    /// What the peer has not taken yet. Valid until the next operation.
    std::span<const uint8_t> queued() const { return out_; }

    /// Ends the stream both ways, what is in store included; the peer sees its
    /// end. The descriptor stays, readable, until the stream is destroyed or
    /// assigned to. Returns 0, also when there is nothing to close.
    int close();

    /// The descriptor, -1 for none.
    int get_handle() const { return fd_.get(); }

    /// The host at the other end, network byte order; 0 if it has no IPv4 address.
    uint32_t get_peer_host() const { return peer_host_; }

private:
    enum State { OPEN, ENDED, FAILED };
    void end(State state);

    QD_Fd fd_;
    uint32_t peer_host_ = 0;
    State state_ = OPEN; // as far as receiving goes
    bool closed_ = false;
    std::vector<uint8_t> in_;
    std::vector<uint8_t> out_;
};

/// Opens streams. Any thread.
class SOCK_Connector {
public:
    /// Connecting takes no longer than this.
    static constexpr int CONNECT_MS = 1000;

    struct Call {
        sockaddr_in to;
        SOCK_Stream* stream; // assigned when connected, else unchanged
        bool connected = false;
    };

    /// Makes all calls at once, from the local address if one was set for this
    /// program, and waits for them at most `milliseconds` in all.
    void connect(std::span<Call> calls, int milliseconds);

    /// The same for one. Returns 0, or -1 with `stream` unchanged.
    int connect(SOCK_Stream* stream, const sockaddr_in* to, int milliseconds = CONNECT_MS);
};
