// How streams to members are opened.
#pragma once

#include "platform/net/reactor.h"
#include "platform/net/sock_stream.h"
#include "signalling/peer_lines.h"

#include <netinet/in.h>
#include <span>
#include <vector>

class QD_Member;

/// Connects handlers' streams and has them watched by one reactor, not owned.
template <class HANDLER, class CONNECTOR> class Connector {
public:
    /// A handler to be connected, not owned, and what became of it: 0 or -1.
    struct Order {
        sockaddr_in to;
        HANDLER* handler;
        int result = -1;
    };

    explicit Connector(Reactor* reactor) : reactor_(reactor) {}
    virtual ~Connector() = default;

    /// Connects all at the same time, within `milliseconds`. Prints a line for
    /// each that fails.
    virtual void connect(std::span<Order> orders, int milliseconds);

    /// The same for one. Returns 0 or -1.
    virtual int connect(const sockaddr_in* to, HANDLER* handler)
    {
        Order order {*to, handler};
        connect({&order, 1}, CONNECTOR::CONNECT_MS);
        return order.result;
    }

private:
    Reactor* const reactor_;
    CONNECTOR connector_;
};

template <class HANDLER, class CONNECTOR>
void Connector<HANDLER, CONNECTOR>::connect(std::span<Order> orders, int milliseconds)
{
    std::vector<typename CONNECTOR::Call> calls;
    for (const Order& order : orders)
        calls.push_back({order.to, order.handler->peer()});
    connector_.connect(calls, milliseconds);
    for (size_t i = 0; i < calls.size(); ++i) {
        if (!calls[i].connected) {
            qd_peer_lines().print(orders[i].to.sin_addr.s_addr, "Connector::connect\n");
            continue;
        }
        orders[i].result = orders[i].handler->open(reactor_);
        if (orders[i].result == -1)
            qd_peer_lines().print(orders[i].to.sin_addr.s_addr, "Connector: connect\n");
    }
}

/// The port that every member listens on for others' streams.
constexpr uint16_t QD_SIGNALLING_PORT = 5000;

/// Opens a stream to each of the members, all at the same time, within
/// `milliseconds`. Those that cannot be reached are left without one.
void qd_connect_members(std::span<QD_Member* const> members, Reactor* reactor, int milliseconds);
