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

    void send(QD_Quantiser& quantiser, int count, double gap)
    {
        for (int i = 0; i < count; ++i, ++n, now += gap) {
            const bool intra = n % QD_Quantiser::PERIOD == 0;
            const double q = quantiser.get(intra);
            const int size = static_cast<int>(std::ceil(detail / q * (intra ? 4 : 1)));
            quantiser.coded({now, size, intra, q, q * q / 3, change});
        }
    }

    int n = 0;
    double now = 0;
};

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
