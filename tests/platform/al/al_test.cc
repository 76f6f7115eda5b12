#include "platform/al/al.h"

#include <gtest/gtest.h>

TEST(Al, ParametersAreCutToTheirRangeAndRefusedOnesChangeNothing)
{
    for (long value : {-2, 257, 1}) {
        const long pairs[] = {AL_LEFT_SPEAKER_GAIN, value, AL_RIGHT_INPUT_ATTEN, value};
        const long refused[] = {AL_LEFT_SPEAKER_GAIN, 3, AL_OUTPUT_RATE, 44100};
        long got[] = {AL_LEFT_SPEAKER_GAIN, -7, AL_RIGHT_INPUT_ATTEN, -7};
        EXPECT_EQ(ALsetparams(AL_DEFAULT_DEVICE, pairs, 4), 0);
        EXPECT_EQ(ALsetparams(AL_DEFAULT_DEVICE, refused, 4), -1);
        EXPECT_EQ(ALgetparams(AL_DEFAULT_DEVICE, got, 4), 0);
        EXPECT_EQ(got[1], std::clamp(value, 0L, 255L));
        EXPECT_EQ(got[3], got[1]);
    }
    qd_al_shutdown();
}
