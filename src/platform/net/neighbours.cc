#include "platform/net/neighbours.h"

#include <algorithm>
#include <cstring>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

namespace {

constexpr size_t REPLY_SIZE = 32 << 10; // one message of the table's answer fits

struct Request {
    nlmsghdr header {sizeof(Request), RTM_GETNEIGH, NLM_F_REQUEST | NLM_F_DUMP, 0, 0};
    ndmsg body {AF_INET, 0, 0, 0, 0, 0, 0};
};

/// The address that an entry is about, 0 for none.
uint32_t address_of(const nlmsghdr* entry)
{
    const auto* body = static_cast<const ndmsg*>(NLMSG_DATA(entry));
    auto left = static_cast<unsigned>(entry->nlmsg_len - NLMSG_LENGTH(sizeof *body));
    const auto* attribute = reinterpret_cast<const rtattr*>(
        reinterpret_cast<const char*>(body) + NLMSG_ALIGN(sizeof *body));
    for (; RTA_OK(attribute, left); attribute = RTA_NEXT(attribute, left)) {
        uint32_t address = 0;
        if (attribute->rta_type == NDA_DST && RTA_PAYLOAD(attribute) == sizeof address) {
            memcpy(&address, RTA_DATA(attribute), sizeof address);
            return address;
        }
    }
    return 0;
}

}

QD_Neighbours::QD_Neighbours() : fd_(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_ROUTE))
{
}

void QD_Neighbours::refresh()
{
    const Request request;
    if (!fd_ || ::send(fd_.get(), &request, sizeof request, MSG_DONTWAIT) < 0)
        return;
    // The kernel answers within the call; what it answers is read to its end.
    alignas(nlmsghdr) char reply[REPLY_SIZE];
    std::vector<Missing> missing;
    for (complete_ = false; !complete_;) {
        const ssize_t got = ::recv(fd_.get(), reply, sizeof reply, MSG_DONTWAIT);
        if (got <= 0)
            return; // rather the table as it was
        take({reply, static_cast<size_t>(got)}, missing);
    }
    missing_.swap(missing);
}

void QD_Neighbours::take(std::span<const char> messages, std::vector<Missing>& missing)
{
    auto left = static_cast<unsigned>(messages.size());
    const auto* entry = reinterpret_cast<const nlmsghdr*>(messages.data());
    for (; NLMSG_OK(entry, left); entry = NLMSG_NEXT(entry, left)) {
        if (entry->nlmsg_type == NLMSG_DONE || entry->nlmsg_type == NLMSG_ERROR)
            complete_ = true;
        if (entry->nlmsg_type != RTM_NEWNEIGH)
            continue;
        const unsigned state = static_cast<const ndmsg*>(NLMSG_DATA(entry))->ndm_state;
        const uint32_t host = address_of(entry);
        if (host != 0 && (state & (NUD_INCOMPLETE | NUD_FAILED)) != 0)
            missing.push_back({host, (state & NUD_INCOMPLETE) != 0, tried(host)});
    }
}

QD_Clock::Time QD_Neighbours::tried(uint32_t host) const
{
    const auto known = std::find_if(
        missing_.begin(), missing_.end(), [&](const Missing& one) { return one.host == host; });
    return known == missing_.end() ? QD_Clock::Time() : known->tried;
}

bool QD_Neighbours::may_send(uint32_t host, QD_Clock::Time now)
{
    const auto known = std::find_if(
        missing_.begin(), missing_.end(), [&](const Missing& one) { return one.host == host; });
    if (known == missing_.end())
        return true;
    const auto trials = std::count_if(
        missing_.begin(), missing_.end(), [](const Missing& one) { return one.asked; });
    if (known->asked || trials >= MAX_TRIALS || now - known->tried < RETRY)
        return false;
    known->asked = true; // by the datagram that goes now
    known->tried = now;
    return true;
}
