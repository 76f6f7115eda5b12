#include "platform/vl/quantiser.h"

#include <gtest/gtest.h>

namespace {

// A scene whose pictures cost `detail` bytes divided by the quantiser, intra ones four times that.
int size_of(double detail, double q, int n)
{
    return static_cast<int>(detail / q * (n % 10 == 0 ? 4 : 1));
}

}

TEST(Quantiser, AimsAtNineTenthsOfTheLinkWithinLimits)
{
    struct {
        double kbps;
        int fps;
        double target;
        int cap;
    } const cases[] = {
        {20, 10, 225, 1400},
        {60, 5, 1350, 3000},
        {120, 10, 1350, 6000},
        {1500, 10, 6000, 8192},
        {1500, 30, 5625, 8192},
        {1, 30, 3.75, 1400},
    };
    for (const auto& c : cases) {
        const QD_Quantiser quantiser(c.kbps, c.fps);
        EXPECT_DOUBLE_EQ(quantiser.get_target(), c.target);
        EXPECT_EQ(quantiser.get_cap(), c.cap);
        EXPECT_GE(quantiser.get(), QD_Quantiser::FINEST);
        EXPECT_LE(quantiser.get(), QD_Quantiser::COARSEST);
    }
}

TEST(Quantiser, SettlesOnTheTargetAndFollowsTheScene)
{
    QD_Quantiser quantiser(120, 10);
    int n = 0;
    for (double detail : {8000.0, 16000.0, 5000.0}) {
        double sum = 0;
        for (int i = 0; i < 200; ++i, ++n) {
            const int size = size_of(detail, quantiser.get(), n);
            quantiser.coded(size);
            if (i >= 100)
                sum += size;
        }
        EXPECT_NEAR(sum / 100, quantiser.get_target(), quantiser.get_target() * 0.05) << detail;
    }
}

TEST(Quantiser, StaysWithinItsLimitsWhateverPicturesCost)
{
    QD_Quantiser quantiser(20, 10);
    for (int i = 0; i < 100; ++i)
        quantiser.coded(8192);
    EXPECT_EQ(quantiser.get(), QD_Quantiser::COARSEST);
    for (int i = 0; i < 100; ++i)
        quantiser.coded(1);
    EXPECT_EQ(quantiser.get(), QD_Quantiser::FINEST);
}
