#include "signalling/connector.h"

#include "signalling/member.h"
#include "signalling/svc_handler.h"

#include <memory>

void qd_connect_members(std::span<QD_Member* const> members, Reactor* reactor, int milliseconds)
{
    using Member_Connector = Connector<QD_Svc_Handler, SOCK_Connector>;
    std::vector<std::unique_ptr<QD_Svc_Handler>> handlers;
    std::vector<Member_Connector::Order> orders;
    for (const QD_Member* member : members) {
        handlers.push_back(std::make_unique<QD_Svc_Handler>());
        sockaddr_in to {};
        to.sin_family = AF_INET;
        to.sin_port = htons(QD_SIGNALLING_PORT);
        to.sin_addr.s_addr = member->get_host();
        orders.push_back({to, handlers.back().get()});
    }
    Member_Connector(reactor).connect(orders, milliseconds);
    for (size_t i = 0; i < orders.size(); ++i) {
        const bool connected = orders[i].result == 0;
        members[i]->set_stream(connected ? handlers[i]->peer() : nullptr);
        if (connected)
            reactor->adopt(std::move(handlers[i]));
    }
}
