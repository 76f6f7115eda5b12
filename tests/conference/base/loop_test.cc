#include "conference/base/loop.h"

#include <csignal>
#include <gtest/gtest.h>

TEST(Loop, SignalsEndItUnlessTheyWereIgnoredAtTheStart)
{
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    signal(SIGHUP, SIG_IGN);
    const QD_Fd signals = qd_block_ending_signals();
    raise(SIGHUP);
    EXPECT_FALSE(qd_take_signal(signals));
    raise(SIGINT);
    EXPECT_TRUE(qd_take_signal(signals));
    signal(SIGHUP, SIG_DFL);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}
