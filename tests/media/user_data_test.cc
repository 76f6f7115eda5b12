#include "media/user_data.h"

#include <gtest/gtest.h>

TEST(UserData, LossIsArrivingBehindAHigherNumber)
{
    rtp_fix_header header;
    UserData figures(&header, 1600, 10000);
    struct {
        uint16_t seq;
        int lost;
    } const steps[] = {{10, 0}, {10, 0}, {20, 0}, {19, 1}, {20, 1}, {65535, 1}, {0, 2}, {40000, 3}};
    for (const auto& step : steps) {
        header.seq = step.seq;
        figures.frame(&header, 1600, 10100);
        EXPECT_EQ(figures.frames_lost, step.lost) << step.seq;
    }
    EXPECT_EQ(figures.frames_received, 8) << "not what made the figures";
    EXPECT_EQ(figures.getKbps(14000), 17) << "of five seconds";
    EXPECT_EQ(figures.getKbps(15100), 0);
}

TEST(UserData, LateIsStrictlyBetweenThreeHundredMillisecondsAndASecond)
{
    const rtp_fix_header header;
    for (auto [gap, late] : {std::pair {300u, 0}, {301u, 1}, {999u, 1}, {1000u, 0}}) {
        UserData figures(&header, 1600, 10000);
        for (unsigned now : {10000u, 10000u + gap})
            figures.frame(&header, 1600, now);
        EXPECT_EQ(figures.frames_late, late) << gap;
    }
}
