// The framework's end of the link, played by the test; bytes written by hand.
#pragma once

#include "platform/base/bytes.h"
#include "platform/base/fd.h"
#include "tests/support/loopback.h"

#include <sys/socket.h>

/// Listens on a port of the system's choice; then one link to an application.
class QD_Test_Framework {
public:
    QD_Test_Framework() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const timeval patience {20, 0}; // the link's as well
        ::setsockopt(listener_.get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        port_ = std::to_string(qd_bind_somewhere(listener_.get()));
        ::listen(listener_.get(), 4);
    }

    const std::string& port() const { return port_; }

    /// Takes the application's connection and returns its 12 bytes of registration, fewer on
    /// failure.
    std::string accept()
    {
        link_.reset(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        return hear(12);
    }

    void send(const std::string& bytes) const
    {
        [[maybe_unused]] const ssize_t sent
            = ::send(link_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }

    void send_event(int type, const std::string& payload) const
    {
        send(word(static_cast<uint32_t>(type)) + word(static_cast<uint32_t>(payload.size()))
            + payload);
    }

    /// Exactly so many bytes, fewer if they do not come in time.
    std::string hear(size_t bytes) const
    {
        std::string got(bytes, '\0');
        const ssize_t n = ::recv(link_.get(), got.data(), bytes, MSG_WAITALL);
        got.resize(n > 0 ? static_cast<size_t>(n) : 0);
        return got;
    }

    /// Adds or removes a member at the test's loopback address number `host`.
    void announce(int id, int host, const std::string& name) const
    {
        announce_at(id, qd_test_host(host), name);
    }
    void remove(int id, int host) const
    {
        send_event(1, record('?', id, qd_test_host(host)) + '\0');
    }

    /// Adds one at an address in network byte order.
    void announce_at(int id, uint32_t address, const std::string& name) const
    {
        send_event(1, record('=', id, address) + static_cast<char>(name.size()) + name);
    }
    void end_session() const { send_event(1, ">"); }

    /// Sends an echo request and waits for it: what was sent before has been handled then.
    bool settle() const
    {
        send_event(51, "ping");
        return hear(12) == std::string("\0\0\0\x33\0\0\0\4ping", 12);
    }

    /// The link, for waiting on what comes from the application.
    int descriptor() const { return link_.get(); }

    void close_link() { link_.reset(); }

private:
    static std::string word(uint32_t value)
    {
        uint8_t bytes[4];
        qd_put_u32(bytes, value);
        return {bytes, bytes + 4};
    }

    static std::string record(char command, int id, uint32_t address)
    {
        return command + word(ntohl(address)) + word(static_cast<uint32_t>(id));
    }

    QD_Fd listener_;
    QD_Fd link_;
    std::string port_;
};
