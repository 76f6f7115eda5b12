#include "platform/base/thread.h"

#include "platform/base/process_end.h"
#include "tests/support/wait.h"

#include <csignal>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

/// Runs on when it is told to stop until `stuck` is cleared.
struct Stuck_Thread : SprocThread {
    std::shared_ptr<std::atomic<bool>> stuck = std::make_shared<std::atomic<bool>>(true);
    std::shared_ptr<std::atomic<bool>> destroyed = std::make_shared<std::atomic<bool>>(false);

    ~Stuck_Thread() override { *destroyed = true; }
    int run() override
    {
        while (running != 0 || *stuck)
            pause(1);
        return 0;
    }
};

}

TEST(Thread, SignalsDoNotEndAWaitEarly)
{
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(SIGUSR1, &action, nullptr);
    std::atomic<bool> done = false;
    std::thread sender([&, waiting = pthread_self()] {
        while (!done) {
            pthread_kill(waiting, SIGUSR1);
            std::this_thread::sleep_for(1ms);
        }
    });
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(QD_Wake().wait(50));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 50ms);
    Stuck_Thread thread;
    thread.start();
    *thread.stuck = false;
    EXPECT_EQ(thread.kill(), 0);
    done = true;
    sender.join();
}

TEST(ThreadDeathTest, OneThatMissesItsBoundEndsTheProcessWithItsDataSaved)
{
    EXPECT_EXIT(
        {
            qd_save_at_end([] { fputs("saved\n", stderr); });
            Stuck_Thread thread;
            thread.start();
            thread.kill(150);
            fputs("still there\n", stderr);
        },
        testing::ExitedWithCode(0), "^SprocThread: thread [0-9]+ does not end\nsaved\n$");
}

TEST(ThreadDeathTest, WhateverHoldsUpTheEndEndsWithinItsBound)
{
    EXPECT_EXIT(
        {
            qd_save_at_end([] { fputs("saved\n", stderr); });
            qd_end_within(1, 7);
            pause();
        },
        testing::ExitedWithCode(7), "^saved\n$");
}

TEST(Thread, OneThatIsLetGoKeepsWhatItUsesUntilItEnds)
{
    auto thread = std::make_shared<Stuck_Thread>();
    const auto stuck = thread->stuck;
    const auto destroyed = thread->destroyed;
    ASSERT_EQ(thread->start(), 0);
    testing::internal::CaptureStderr();
    EXPECT_EQ(thread->let_go(150), -1);
    thread.reset();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("does not end"), std::string::npos);
    EXPECT_FALSE(*destroyed);
    *stuck = false;
    EXPECT_TRUE(qd_wait_for([&] { return destroyed->load(); }));
}
