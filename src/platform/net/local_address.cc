#include "platform/net/local_address.h"

#include "platform/base/fd.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdlib>
#include <ifaddrs.h>
#include <net/if.h>
#include <netdb.h>
#include <netinet/in.h>
#include <string_view>
#include <sys/socket.h>

namespace {

// A documentation address (RFC 5737): never reached, only routed.
constexpr uint32_t ELSEWHERE = 0xc0000201; // 192.0.2.1

bool is_loopback(uint32_t address) { return ntohl(address) >> 24 == 127; }

std::vector<uint32_t> running_interfaces()
{
    std::vector<uint32_t> found;
    ifaddrs* all = nullptr;
    if (getifaddrs(&all) != 0)
        return found;
    for (const ifaddrs* i = all; i != nullptr; i = i->ifa_next) {
        const bool usable = (i->ifa_flags & IFF_RUNNING) != 0 && (i->ifa_flags & IFF_LOOPBACK) == 0;
        if (usable && i->ifa_addr != nullptr && i->ifa_addr->sa_family == AF_INET)
            found.push_back(reinterpret_cast<const sockaddr_in*>(i->ifa_addr)->sin_addr.s_addr);
    }
    freeifaddrs(all);
    return found;
}

// gethostbyname and its kin may ask a dead name server for ten seconds at
// start-up; the file of hosts is what names a workstation.
uint32_t host_name_address()
{
    char name[256] = "";
    if (::gethostname(name, sizeof name - 1) != 0)
        return 0;
    uint32_t found = 0;
    sethostent(0);
    while (const hostent* entry = gethostent()) {
        bool same = std::string_view(entry->h_name) == name;
        for (char** alias = entry->h_aliases; *alias != nullptr; ++alias)
            same = same || std::string_view(*alias) == name;
        if (!same || entry->h_addrtype != AF_INET)
            continue;
        const uint32_t address = reinterpret_cast<const in_addr*>(entry->h_addr_list[0])->s_addr;
        if (found == 0 || is_loopback(found))
            found = address;
    }
    endhostent();
    return found;
}

uint32_t route_source()
{
    QD_Fd fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    sockaddr_in to {};
    to.sin_family = AF_INET;
    to.sin_port = htons(9);
    to.sin_addr.s_addr = htonl(ELSEWHERE);
    // Connecting a datagram socket sends nothing, it only chooses a route.
    if (!fd || ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&to), sizeof to) != 0)
        return 0;
    sockaddr_in from {};
    socklen_t size = sizeof from;
    if (::getsockname(fd.get(), reinterpret_cast<sockaddr*>(&from), &size) != 0)
        return 0;
    return from.sin_addr.s_addr;
}

}

QD_Address_Facts qd_address_facts()
{
    return {getenv("QD_LOCAL_ADDRESS"), host_name_address(), route_source(), running_interfaces()};
}

std::optional<uint32_t> qd_override_address(const char* text)
{
    in_addr address {};
    if (text == nullptr || inet_pton(AF_INET, text, &address) != 1)
        return std::nullopt;
    const uint32_t host_order = ntohl(address.s_addr);
    const bool multicast_or_beyond = host_order >> 28 >= 14;
    if (host_order >> 24 == 0 || multicast_or_beyond)
        return std::nullopt;
    return address.s_addr;
}

uint32_t qd_choose_address(const QD_Address_Facts& facts)
{
    if (auto given = qd_override_address(facts.override_text))
        return *given;
    const auto& known = facts.interfaces;
    if (facts.host_name != 0 && !is_loopback(facts.host_name)
        && std::find(known.begin(), known.end(), facts.host_name) != known.end())
        return facts.host_name;
    if (facts.route_source != 0)
        return facts.route_source;
    return known.empty() ? htonl(INADDR_LOOPBACK) : known.front();
}
