#include "media/user_data.h"

#include <gtest/gtest.h>

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
