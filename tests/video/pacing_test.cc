#include "video/pacing.h"

#include <gtest/gtest.h>

TEST(Pacing, StretchesAndShrinksByTenths)
{
    struct {
        double kbps, fps, factor;
    } const cases[]
        = {{0, 5.2, 1.1}, {18, 5, 1}, {20.5, 3, 1.1}, {20, 3, 1}, {16, 3, 1}, {15.9, 3, 0.9}};
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(QD_Pacing().adapt(c.kbps, c.fps, 20, 5), 10 * c.factor) << c.kbps;
}
