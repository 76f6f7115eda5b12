#include "signalling/peer_lines.h"

#include "tests/support/loopback.h"
#include "tests/support/test_clock.h"

#include <gtest/gtest.h>

TEST(PeerLines, AreBoundedForEachHostAndTheRestIsToldOnce)
{
    QD_Test_Clock clock;
    QD_Peer_Lines lines(clock);
    const auto printed = [&](auto act) {
        testing::internal::CaptureStdout();
        act();
        return testing::internal::GetCapturedStdout();
    };
    const auto flood = [&] {
        for (int i = 0; i < 500; ++i)
            lines.print(inet_addr("10.0.0.1"), "x\n");
        lines.print(inet_addr("10.0.0.2"), "%s\n", "other");
    };
    std::string some;
    for (int i = 0; i < QD_Peer_Lines::LINES_A_SECOND; ++i)
        some += "x\n";
    EXPECT_EQ(printed(flood), some + "other\n");
    clock.pass(std::chrono::milliseconds(999));
    EXPECT_EQ(printed([&] { lines.settle(); }), "");
    clock.pass(std::chrono::milliseconds(1));
    EXPECT_EQ(printed([&] { lines.settle(); }),
        "QD_Message: 436 more lines about messages from 10.0.0.1 left out\n");
    EXPECT_EQ(printed(flood), some + "other\n");

    // As many hosts as there are have no more lines than so many.
    const std::string all = printed([&] {
        for (uint32_t host = 1; host < 100000; ++host)
            lines.print(host, "y\n");
    });
    EXPECT_EQ(all.size() / 2, QD_Peer_Lines::MAX_HOSTS - 2 + QD_Peer_Lines::LINES_A_SECOND);
}
