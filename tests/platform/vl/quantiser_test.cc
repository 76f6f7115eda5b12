#include "platform/vl/quantiser.h"

#include <gtest/gtest.h>

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
