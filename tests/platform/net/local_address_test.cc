#include "platform/net/local_address.h"
#include "platform/net/sock_library.h"

#include "tests/support/loopback.h"

#include <gtest/gtest.h>

namespace {

uint32_t address(const char* text) { return inet_addr(text); }

}

TEST(LocalAddress, IsChosenInTheDocumentedOrder)
{
    const uint32_t lan = address("192.168.4.17");
    const uint32_t other = address("10.1.2.3");
    struct {
        const char* why;
        QD_Address_Facts facts;
        const char* chosen;
    } const cases[] = {
        {"the override", {"127.0.0.3", lan, other, {lan}}, "127.0.0.3"},
        {"the host name's, if an interface has it", {nullptr, lan, other, {other, lan}},
            "192.168.4.17"},
        {"not one that no interface has", {nullptr, lan, other, {other}}, "10.1.2.3"},
        {"not a loopback host name", {nullptr, address("127.0.1.1"), lan, {other}}, "192.168.4.17"},
        {"without a route the first interface", {nullptr, 0, 0, {other, lan}}, "10.1.2.3"},
        {"with nothing at all the loopback", {nullptr, 0, 0, {}}, "127.0.0.1"},
        {"a wrong override counts as none", {"300.0.0.1", 0, lan, {}}, "192.168.4.17"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(qd_choose_address(c.facts), address(c.chosen)) << c.why;
}

TEST(LocalAddress, AnOverrideIsAnAddressThatAHostCanHave)
{
    EXPECT_EQ(qd_override_address("10.0.0.1"), address("10.0.0.1"));
    for (const char* wrong :
        {"", "host", "0.0.0.0", "224.0.0.1", "255.255.255.255", "1.2.3", "::1"})
        EXPECT_FALSE(qd_override_address(wrong)) << wrong;
    EXPECT_FALSE(qd_override_address(nullptr));
}

TEST(SockLibrary, AddressesAndNames)
{
    qd_use_test_address();
    EXPECT_EQ(SOCK_Library::getlocalhostid(), qd_test_host(1));
    EXPECT_EQ(SOCK_Library::gethostid("10.9.8.7"), address("10.9.8.7"));
    EXPECT_EQ(SOCK_Library::gethostid(""), 0u);
    EXPECT_EQ(SOCK_Library::gethostid(std::string(300, 'x').c_str()), 0u);
    EXPECT_EQ(SOCK_Library::gethostid("localhost"), address("127.0.0.1"));
    char name[SOCK_Library::NAME_SIZE];
    SOCK_Library::gethostname(address("127.1.2.3"), name);
    EXPECT_STREQ(name, "127.1.2.3") << "the loopback is never looked up";
}
