#include "video/pacing.h"

#include <gtest/gtest.h>

TEST(Pacing, StretchesAndShrinksByTenths)
{
    struct {
        const char* why;
        double kbps, fps, limit;
        int fps_max;
        double factor;
    } const cases[] = {
        {"too many pictures, whatever the bits", 0, 5.2, 20, 5, 1.1},
        {"as many pictures as allowed", 18, 5, 20, 5, 1},
        {"too many bits", 20.5, 3, 20, 5, 1.1},
        {"exactly the bits", 20, 3, 20, 5, 1},
        {"just enough of them", 16, 3, 20, 5, 1},
        {"too few", 15.9, 3, 20, 5, 0.9},
    };
    for (const auto& c : cases) {
        QD_Pacing pacing;
        EXPECT_DOUBLE_EQ(pacing.adapt(c.kbps, c.fps, c.limit, c.fps_max), 10 * c.factor) << c.why;
    }
    QD_Pacing pacing;
    double wait = 0;
    for (int i = 0; i < 23; ++i)
        wait = pacing.adapt(0, 0, 20, 5);
    EXPECT_EQ(wait, 1.0) << "no less";
    for (int i = 0; i < 200; ++i)
        wait = pacing.adapt(100, 0, 20, 5);
    EXPECT_GT(wait, 1e8) << "and no most";
}
