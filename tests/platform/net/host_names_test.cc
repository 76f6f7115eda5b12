#include "platform/net/host_names.h"

#include "platform/base/semaphore.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>

TEST(HostNames, TheCacheIsBounded)
{
    // Kept for good, as the contract asks: a look-up may outlive the test.
    static QD_Semaphore& answers = *new QD_Semaphore(0);
    static std::atomic<int> asked = 0;
    static auto& names = *new QD_Host_Names([](uint32_t address) {
        ++asked;
        answers.wait();
        return address == 13 ? "" : "host" + std::to_string(address);
    });
    for (int i = 0; i < 2; ++i) // a resolver that does not answer holds nobody up
        EXPECT_EQ(names.find(1), "");
    EXPECT_EQ(names.find(13), "");
    answers.post();
    answers.post();
    EXPECT_TRUE(qd_wait_for([&] { return names.find(1) == "host1" && asked == 2; }));

    constexpr auto MOST = static_cast<uint32_t>(QD_Host_Names::MAX_NAMES);
    for (uint32_t address = 100; address < 100 + 3 * MOST; ++address)
        names.find(address);
    for (uint32_t i = 0; i <= MOST; ++i)
        answers.post();
    EXPECT_TRUE(qd_wait_for([&] { return names.find(99 + 3 * MOST) != ""; }));
    EXPECT_LE(asked, static_cast<int>(MOST) + 3);
}
