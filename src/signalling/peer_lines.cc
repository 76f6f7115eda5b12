#include "signalling/peer_lines.h"

#include "platform/net/host_address.h"

#include <cstdarg>
#include <cstdio>

QD_Peer_Lines& qd_peer_lines()
{
    static QD_Peer_Lines lines;
    return lines;
}

void QD_Peer_Lines::print(uint32_t host, const char* format, ...)
{
    if (!has_room(host))
        return;
    va_list values;
    va_start(values, format);
    vprintf(format, values);
    va_end(values);
}

bool QD_Peer_Lines::has_room(uint32_t host)
{
    settle();
    const bool known = counts_.contains(host);
    Count& count = counts_[known || counts_.size() < MAX_HOSTS ? host : INADDR_ANY];
    if (count.lines == 0)
        count.began = clock_.now();
    return ++count.lines <= LINES_A_SECOND;
}

void QD_Peer_Lines::settle()
{
    if (counts_.empty())
        return;
    const QD_Clock::Time now = clock_.now();
    for (auto one = counts_.begin(); one != counts_.end();) {
        if (now - one->second.began < std::chrono::seconds(1)) {
            ++one;
            continue;
        }
        tell(one->first, one->second.lines - LINES_A_SECOND);
        one = counts_.erase(one);
    }
}

void QD_Peer_Lines::tell(uint32_t host, int left_out)
{
    const std::string who = host == INADDR_ANY ? "further hosts" : qd_address_text(ntohl(host));
    if (left_out > 0)
        printf(
            "QD_Message: %d more lines about messages from %s left out\n", left_out, who.c_str());
}
