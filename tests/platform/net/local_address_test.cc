#include "platform/net/local_address.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

TEST(LocalAddress, IsChosenInTheDocumentedOrder)
{
    const uint32_t lan = inet_addr("192.168.4.17");
    const uint32_t other = inet_addr("10.1.2.3");
    struct {
        const char* why;
        QD_Address_Facts facts;
        uint32_t chosen;
    } const cases[] = {
        {"the override", {"10.1.2.3", lan, lan, {lan}}, other},
        {"the host name's, if an interface has it", {nullptr, lan, other, {other, lan}}, lan},
        {"not one that no interface has", {nullptr, lan, other, {other}}, other},
        {"not a loopback host name", {nullptr, inet_addr("127.0.1.1"), lan, {other}}, lan},
        {"without a route the first interface", {nullptr, 0, 0, {other, lan}}, other},
        {"with nothing at all the loopback", {nullptr, 0, 0, {}}, inet_addr("127.0.0.1")},
        {"a wrong override counts as none", {"300.0.0.1", 0, lan, {}}, lan},
        {"nor can a host have this one", {"0.0.0.0", 0, lan, {}}, lan},
        {"nor this", {"224.0.0.1", 0, lan, {}}, lan},
    };
    for (const auto& c : cases)
        EXPECT_EQ(qd_choose_address(c.facts), c.chosen) << c.why;
}
