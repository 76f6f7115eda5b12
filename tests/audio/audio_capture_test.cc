#include "audio/audio_capture.h"
#include "tests/support/signal_math.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

TEST(AudioCapture, FramesComeEveryTenthOfASecondAndFollowOnOneAnother)
{
    setenv("QD_MIC", "tone:500", 1);
    QD_AudioCapture capture;
    std::vector<int16_t> heard(8 * 800);
    EXPECT_EQ(capture.capture(heard.data(), 800), 0) << "not open: nothing";
    ASSERT_EQ(capture.open(), 0);
    capture.capture(heard.data(), 800);
    const auto begin = std::chrono::steady_clock::now();
    for (size_t at = 0; at < heard.size(); at += 800)
        EXPECT_EQ(capture.capture(&heard[at], 800), 0);
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(took, 700ms);
    EXPECT_LT(took, 1200ms);
    EXPECT_NEAR(qd_amplitude(heard, 500), 16384, 20);
    capture.close();
    capture.close();

    const long pairs[] = {AL_LEFT_INPUT_ATTEN, 255, AL_RIGHT_INPUT_ATTEN, 0};
    ALsetparams(AL_DEFAULT_DEVICE, pairs, 4);
    EXPECT_EQ(QD_AudioCapture::get_gain(), 127) << "the truncated mean";
    QD_AudioCapture::set_gain(9);
    EXPECT_EQ(QD_AudioCapture::get_gain(), 9);
    qd_al_shutdown();
}
