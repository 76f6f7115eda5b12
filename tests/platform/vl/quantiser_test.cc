#include "platform/vl/quantiser.h"

#include <gtest/gtest.h>

namespace {

// A hundred pictures, one each `gap` seconds: predicted ones cost `detail` bytes divided by the
// quantiser, intra ones four times that; `change` is the mean square from one to the next.
void send(QD_Quantiser& quantiser, double detail, double change, double gap)
{
    for (int i = 0; i < 100; ++i) {
        const bool intra = i % QD_Quantiser::PERIOD == 0;
        const double q = quantiser.get(intra);
        const int size = static_cast<int>(detail / q * (intra ? 4 : 1)) + 1;
        quantiser.coded({i * gap, size, intra, q, q * q / 3, change});
    }
}

}

TEST(Quantiser, CalmScenesGetFinerPicturesInLongerGaps)
{
    QD_Quantiser calm(20, 10);
    QD_Quantiser lively(20, 10);
    send(calm, 3000, 0.1, 0.2);
    send(lively, 3000, 1000, 0.2);
    EXPECT_GT(calm.get_target(), 1.5 * lively.get_target());
}

TEST(Quantiser, StaysWithinItsLimitsWhateverPicturesCost)
{
    QD_Quantiser quantiser(20, 10);
    send(quantiser, 1e6, 0, 0.1);
    EXPECT_EQ(quantiser.get(false), QD_Quantiser::COARSEST);
    send(quantiser, 0, 0, 0.1);
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
