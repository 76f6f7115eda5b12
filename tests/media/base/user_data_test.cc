#include "media/base/user_data.h"

#include <ctime>
#include <gtest/gtest.h>
#include <sys/time.h>

namespace {

time_t set_back = 0; // by so many seconds

}

// In place of the C library's: the time of day as somebody has set it.
extern "C" int gettimeofday(timeval* now, void*) noexcept
{
    timespec real {};
    clock_gettime(CLOCK_REALTIME, &real);
    *now = {real.tv_sec - set_back, real.tv_nsec / 1000};
    return 0;
}

TEST(UserData, SettingTheTimeOfDayDoesNotTouchTheFigures)
{
    const unsigned before = UserData::get_time_stamp();
    set_back = 3600;
    EXPECT_LT(UserData::get_time_stamp() - before, 60'000U);
    set_back = 0;
}

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
