#include "platform/vl/quantiser.h"

#include "platform/vl/picture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace {

/// A scene whose predicted pictures cost `detail` bytes divided by the
/// quantiser, intra ones four times that; each sent `gap` seconds after the last.
struct Scene {
    double detail;
    double change; // mean square from one picture to the next

    // Sends so many pictures. Returns their mean size.
    double send(QD_Quantiser& quantiser, int count, double gap)
    {
        double sum = 0;
        for (int i = 0; i < count; ++i, ++n, now += gap) {
            const bool intra = n % QD_Quantiser::PERIOD == 0;
            const double q = quantiser.get(intra);
            const int size = static_cast<int>(std::ceil(detail / q * (intra ? 4 : 1)));
            quantiser.coded({now, size, intra, q, q * q / 3, change});
            sum += size;
        }
        return sum / count;
    }

    int n = 0;
    double now = 0;
};

}

TEST(Quantiser, LivelyScenesFillTheLinkAtTheHighestRate)
{
    struct {
        double kbps;
        int fps;
    } const cases[] = {{20, 10}, {60, 5}, {120, 10}};
    for (const auto& c : cases) {
        QD_Quantiser quantiser(c.kbps, c.fps);
        const double share = c.kbps * 125 / c.fps;
        for (double details : {5., 10., 4.}) { // as they change
            Scene scene {details * share, 1000};
            scene.send(quantiser, 100, 1.0 / c.fps);
            const double mean = scene.send(quantiser, 100, 1.0 / c.fps);
            EXPECT_GT(mean, 0.8 * share) << c.kbps << " " << details;
            EXPECT_LE(mean, share) << c.kbps << " " << details;
        }
    }
}

TEST(Quantiser, CalmScenesGetFinerPicturesInLongerGaps)
{
    double targets[2];
    for (int calm : {0, 1}) {
        QD_Quantiser quantiser(20, 10);
        Scene scene {3000, calm != 0 ? 0.1 : 1000};
        scene.send(quantiser, 50, 0.2);
        targets[calm] = quantiser.get_target();
    }
    EXPECT_GT(targets[1], 1.5 * targets[0]);
}

TEST(Quantiser, StaysWithinItsLimitsWhateverPicturesCost)
{
    QD_Quantiser quantiser(20, 10);
    Scene {1e6, 0}.send(quantiser, 100, 0.1);
    EXPECT_EQ(quantiser.get(false), QD_Quantiser::COARSEST);
    Scene {0, 0}.send(quantiser, 100, 0.1);
    EXPECT_EQ(quantiser.get(false), QD_Quantiser::FINEST);
    EXPECT_EQ(quantiser.get(true), QD_Quantiser::FINEST);
}

TEST(Quantiser, WhatASecondMayTakeIsSharedByItsPictures)
{
    QD_Quantiser quantiser(20, 10);
    quantiser.coded({0, 4000, true, 10, 30, 0});
    EXPECT_EQ(quantiser.get_next_room(0.1, true).bytes, 4750) << "intra pictures do not count";
    EXPECT_FALSE(quantiser.get_next_room(0.1, true).is_shared);
    quantiser.coded({0.1, 1000, false, 10, 30, 9});
    EXPECT_EQ(quantiser.get_next_room(0.2, false).bytes, 3750);
    EXPECT_TRUE(quantiser.get_next_room(0.2, false).is_shared);
    EXPECT_EQ(quantiser.get_next_room(1.05, false).bytes, 4750) << "a second later";
    EXPECT_EQ(QD_Quantiser(1500, 10).get_next_room(0, false).bytes, QD_CODED_SIZE);
}

TEST(Quantiser, BeginsOneStepBelowWhatFittedUntilPicturesAreShort)
{
    QD_Quantiser quantiser(1500, 10);
    quantiser.coded({0, 8000, true, 1, 1, 0});
    quantiser.coded({0.1, 8000, false, 5, 3, 100});
    EXPECT_EQ(quantiser.get(false), 4);
    quantiser.coded({0.2, 8000, false, 4, 3, 100});
    EXPECT_EQ(quantiser.get(false), 3);
    quantiser.coded({0.3, 4000, false, 3, 3, 100});
    EXPECT_LT(quantiser.get(false), 2) << "what fits with room to spare holds nothing back";
}
