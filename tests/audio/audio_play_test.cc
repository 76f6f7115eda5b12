#include "audio/audio_capture.h"
#include "audio/audio_play.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wait.h"
#include "tests/support/wav.h"

#include <gtest/gtest.h>
#include <numeric>

TEST(AudioPlay, PlaysThroughAQueueThatKeepsTheNewestTwoFrames)
{
    const QD_Temp_Dir dir;
    setenv("QD_SPEAKER", ("file:" + dir.path()).c_str(), 1);
    std::vector<int16_t> samples(2000);
    std::iota(samples.begin(), samples.end(), static_cast<int16_t>(1));
    QD_AudioPlay play;
    play.close(); // never opened: nothing happens
    EXPECT_EQ(play.play(samples.data(), 800), 0) << "0 whatever becomes of it";
    ASSERT_EQ(play.open(), 0);
    EXPECT_EQ(play.play(samples.data(), 2000), 0);
    const std::vector<int16_t> newest(samples.begin() + 400, samples.end());
    EXPECT_TRUE(qd_wait_for([&] { return qd_read_wav(dir.file("port-1.wav")) == newest; }));
    play.close();
    play.close();

    const long pairs[] = {AL_LEFT_SPEAKER_GAIN, 10, AL_RIGHT_SPEAKER_GAIN, 15};
    ALsetparams(AL_DEFAULT_DEVICE, pairs, 4);
    EXPECT_EQ(QD_AudioPlay::get_volume(), 12) << "the truncated mean";
    QD_AudioPlay::set_volume(9);
    EXPECT_EQ(QD_AudioPlay::get_volume(), 9);
    const long input[] = {AL_LEFT_INPUT_ATTEN, 255, AL_RIGHT_INPUT_ATTEN, 0};
    ALsetparams(AL_DEFAULT_DEVICE, input, 4);
    EXPECT_EQ(QD_AudioCapture::get_gain(), 127) << "likewise";
    QD_AudioCapture::set_gain(9);
    EXPECT_EQ(QD_AudioCapture::get_gain(), 9);
    qd_al_shutdown();
}
