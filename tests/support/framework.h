// The framework's end of the link, played by the test; bytes written by hand.
#pragma once

#include "platform/net/bytes.h"
#include "platform/net/fd.h"
#include "tests/support/loopback.h"

#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <sys/socket.h>

/// Listens on a port of the system's choice; then one link to an application.
class QD_Test_Framework {
public:
    QD_Test_Framework() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        ::bind(listener_.get(), reinterpret_cast<sockaddr*>(&address), size);
        ::listen(listener_.get(), 4);
        ::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&address), &size);
        port_ = std::to_string(ntohs(address.sin_port));
    }

    const std::string& port() const { return port_; }

    /// Takes the application's connection and returns its 12 bytes of registration, fewer on
    /// failure.
    std::string accept()
    {
        pollfd waiting {listener_.get(), POLLIN, 0};
        if (::poll(&waiting, 1, PATIENCE_MS) > 0)
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
        std::string got;
        pollfd waiting {link_.get(), POLLIN, 0};
        char c = 0;
        while (got.size() < bytes && ::poll(&waiting, 1, PATIENCE_MS) > 0
            && ::recv(link_.get(), &c, 1, 0) == 1)
            got += c;
        return got;
    }

    /// Adds or removes a member at the test's loopback address number `host`.
    void announce(int id, int host, const std::string& name) const
    {
        send_event(1, record('=', id, host) + static_cast<char>(name.size()) + name);
    }
    void remove(int id, int host) const { send_event(1, record('?', id, host) + '\0'); }
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
    static constexpr int PATIENCE_MS = 20000;

    static std::string word(uint32_t value)
    {
        std::string bytes(4, '\0');
        qd_put_u32(reinterpret_cast<uint8_t*>(bytes.data()), value);
        return bytes;
    }

    static std::string record(char command, int id, int host)
    {
        return command + word(ntohl(qd_test_host(host))) + word(static_cast<uint32_t>(id));
    }

    QD_Fd listener_;
    QD_Fd link_;
    std::string port_;
};
