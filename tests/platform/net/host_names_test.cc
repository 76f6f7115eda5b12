#include "platform/net/host_names.h"

#include "platform/net/semaphore.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

namespace {

// Kept for good, as the contract asks: a look-up may outlive the test.
struct Resolver {
    QD_Semaphore answers {0};
    std::atomic<int> asked = 0;
    QD_Host_Names names {[this](uint32_t address) {
        ++asked;
        answers.wait();
        return address == 13 ? "" : "host" + std::to_string(address);
    }};
};

}

TEST(HostNames, AreKnownOnceLookedUpAndAskedForOnce)
{
    static auto& resolver = *new Resolver;
    EXPECT_EQ(resolver.names.find(1), "") << "a resolver that does not answer holds nobody up";
    EXPECT_EQ(resolver.names.find(1), "");
    EXPECT_EQ(resolver.names.find(13), "");
    resolver.answers.post();
    EXPECT_TRUE(qd_wait_for([&] { return resolver.names.find(1) == "host1"; }));
    resolver.answers.post();
    EXPECT_TRUE(qd_wait_for([&] { return resolver.asked == 2; }));
    EXPECT_EQ(resolver.names.find(13), "");
    resolver.answers.post();
    EXPECT_EQ(resolver.names.find(2), "");
    EXPECT_TRUE(qd_wait_for([&] { return resolver.names.find(2) == "host2"; }));
    EXPECT_EQ(resolver.asked, 3);
}

TEST(HostNames, TheCacheIsBounded)
{
    static auto& resolver = *new Resolver;
    constexpr auto most = static_cast<uint32_t>(QD_Host_Names::MAX_NAMES);
    for (uint32_t address = 1; address <= 3 * most; ++address)
        resolver.names.find(address);
    for (uint32_t i = 0; i <= most; ++i)
        resolver.answers.post();
    EXPECT_TRUE(qd_wait_for([&] { return resolver.names.find(3 * most) != ""; }));
    EXPECT_LE(resolver.asked, static_cast<int>(most) + 1);
}
