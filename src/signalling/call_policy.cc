#include "signalling/call_policy.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>

std::optional<QD_Call_Policy::Network> QD_Call_Policy::parse_network(std::string_view text)
{
    const size_t slash = std::min(text.find('/'), text.size());
    unsigned bits = 32;
    if (slash < text.size()) {
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data() + slash + 1, end, bits);
        if (error != std::errc() || stop != end || bits > 32)
            return std::nullopt;
    }
    in_addr address {};
    if (inet_pton(AF_INET, std::string(text.substr(0, slash)).c_str(), &address) != 1)
        return std::nullopt;
    const uint32_t mask = bits == 0 ? 0 : UINT32_MAX << (32 - bits);
    return Network {ntohl(address.s_addr) & mask, mask};
}

std::optional<QD_Call_Policy> QD_Call_Policy::parse(std::string_view text)
{
    QD_Call_Policy policy;
    if (text == "all")
        return policy;
    policy.networks_.clear();
    if (text == "none")
        return policy;
    for (size_t begin = 0; begin <= text.size();) {
        const size_t comma = std::min(text.find(',', begin), text.size());
        const auto network = parse_network(text.substr(begin, comma - begin));
        if (!network)
            return std::nullopt;
        policy.networks_.push_back(*network);
        begin = comma + 1;
    }
    return policy;
}

QD_Call_Policy QD_Call_Policy::from_environment()
{
    const char* const text = getenv("QD_CALLS");
    if (text == nullptr || *text == '\0')
        return QD_Call_Policy();
    if (const auto policy = parse(text))
        return *policy;
    fprintf(
        stderr, "QD_CALLS=%s: neither all, none nor networks such as 10.1.0.0/16,10.2.0.7\n", text);
    return QD_Call_Policy();
}

bool QD_Call_Policy::admits(uint32_t host) const
{
    return std::any_of(networks_.begin(), networks_.end(),
        [&](const Network& one) { return (ntohl(host) & one.mask) == one.address; });
}
