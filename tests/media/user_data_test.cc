#include "media/user_data.h"

#include <gtest/gtest.h>

namespace {

// Figures after the packet that makes them, number 0 at 10 s on the clock.
UserData made()
{
    const rtp_fix_header header {};
    return UserData(&header, 1600, 10000);
}

int count(UserData& figures, unsigned seq, unsigned now, int len = 1600)
{
    rtp_fix_header header;
    header.seq = static_cast<uint16_t>(seq);
    return figures.frame(&header, len, now);
}

}

TEST(UserData, LossIsArrivingBehindAHigherNumber)
{
    UserData figures = made();
    count(figures, 10, 10000);
    struct {
        unsigned seq;
        int result, lost;
        const char* why;
    } const steps[] = {
        {10, 1, 0, "the same number again is in order"},
        {20, 1, 0, "a gap is not counted"},
        {19, 0, 1, "one that was overtaken is"},
        {20, 1, 1, "and leaves the highest number as it was"},
        {65535, 1, 1, "up to the largest"},
        {0, 0, 2, "after the wrap all count as lost"},
        {40000, 0, 3, "until the number climbs back"},
        {65535, 1, 3, "to the remembered one"},
    };
    for (const auto& step : steps)
        EXPECT_TRUE(
            count(figures, step.seq, 10100) == step.result && figures.frames_lost == step.lost)
            << step.why;
    EXPECT_EQ(figures.frames_received, 9) << "the first packet is not counted";
}

TEST(UserData, LateIsStrictlyBetweenThreeHundredMillisecondsAndASecond)
{
    for (auto [gap, late] : {std::pair {300u, 0}, {301u, 1}, {999u, 1}, {1000u, 0}}) {
        UserData figures = made();
        count(figures, 1, 10000);
        count(figures, 2, 10000 + gap);
        EXPECT_EQ(figures.frames_late, late) << gap;
        EXPECT_EQ(figures.getLatency(), (static_cast<double>(gap) - 100) / 2);
    }
}

TEST(UserData, TheWindowHoldsFiveSecondsAndAHundredFrames)
{
    UserData figures = made();
    for (unsigned i = 0; i < 150; ++i)
        count(figures, i, 20000 + i * 10, 125);
    EXPECT_EQ(figures.getFps(21500), 20.0) << "thirty frames a second, the ring holds a hundred";
    EXPECT_EQ(figures.getKbps(21500), 20.0);
    EXPECT_EQ(figures.getFps(26000), 9.8) << "frames of exactly five seconds ago are out";
    EXPECT_EQ(figures.getFps(40000), 0.0);
    EXPECT_EQ(figures.getKbps(40000), 0.0);
    EXPECT_LT(figures.getLatency(), 0) << "a fast stream has less than none";
}
