#include "audio/audio_capture.h"
#include "tests/support/signal_math.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

class AudioCapture : public testing::Test {
protected:
    ~AudioCapture() override { qd_al_shutdown(); }
};

}

TEST_F(AudioCapture, GainIsTheTruncatedMeanOfBothAttenuations)
{
    setenv("QD_MIC", "silence", 1);
    QD_AudioCapture::init();
    for (long g : {0L, 1L, 125L, 255L}) {
        EXPECT_EQ(QD_AudioCapture::set_gain(g), 0);
        EXPECT_EQ(QD_AudioCapture::get_gain(), g);
    }
    const long pairs[] = {AL_LEFT_INPUT_ATTEN, 255, AL_RIGHT_INPUT_ATTEN, 0};
    ALsetparams(AL_DEFAULT_DEVICE, pairs, 4);
    EXPECT_EQ(QD_AudioCapture::get_gain(), 127);
    EXPECT_EQ(QD_AudioCapture::set_rate(44100), 0);
}

TEST_F(AudioCapture, FramesComeEveryTenthOfASecondAndFollowOnOneAnother)
{
    setenv("QD_MIC", "tone:500", 1);
    QD_AudioCapture capture;
    capture.close();
    ASSERT_EQ(capture.open(), 0);
    std::vector<int16_t> heard(8 * 800);
    capture.capture(heard.data(), 800);
    const auto begin = std::chrono::steady_clock::now();
    for (size_t at = 0; at < heard.size(); at += 800)
        EXPECT_EQ(capture.capture(&heard[at], 800), 0);
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(took, 700ms);
    EXPECT_LT(took, 1200ms);
    EXPECT_NEAR(qd_amplitude(heard, 500), 16384, 20);

    capture.close();
    EXPECT_FALSE(capture.port);
    EXPECT_FALSE(capture.conf);
}
