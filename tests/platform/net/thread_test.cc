#include "platform/net/thread.h"

#include "tests/support/wait.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::steady_clock;

struct Sleeper : SprocThread {
    std::atomic<int> passes = 0;
    int run() override
    {
        while (running != 0) {
            ++passes;
            pause(60000);
        }
        return 0;
    }
};

}

TEST(SprocThread, WakingEndsASleepAndKillingAllUntilItStartsAgain)
{
    Sleeper sleeper;
    EXPECT_EQ(sleeper.kill(), 0) << "nothing runs yet";
    for (int round = 0; round < 20; ++round) {
        ASSERT_EQ(sleeper.start(), 0);
        EXPECT_EQ(sleeper.start(), -1);
        ASSERT_TRUE(qd_wait_for([&] { return sleeper.passes == 2 * round + 1; }));
        sleeper.wake();
        EXPECT_TRUE(qd_wait_for([&] { return sleeper.passes == 2 * round + 2; }));
        const auto asked = steady_clock::now();
        EXPECT_EQ(sleeper.kill(), 0);
        EXPECT_LT(steady_clock::now() - asked, std::chrono::seconds(1));
    }
}
