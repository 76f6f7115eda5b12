#include "audio/audio_play.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wait.h"

#include <gtest/gtest.h>
#include <sndfile.h>

namespace {

class AudioPlay : public testing::Test {
protected:
    AudioPlay() { setenv("QD_SPEAKER", ("file:" + dir_.path()).c_str(), 1); }
    ~AudioPlay() override { qd_al_shutdown(); }

    QD_Temp_Dir dir_;
};

}

TEST_F(AudioPlay, VolumeIsTheTruncatedMeanOfBothChannels)
{
    QD_AudioPlay::init();
    for (long v : {0L, 1L, 125L, 255L}) {
        EXPECT_EQ(QD_AudioPlay::set_volume(v), 0);
        EXPECT_EQ(QD_AudioPlay::get_volume(), v);
    }
    const long pairs[] = {AL_LEFT_SPEAKER_GAIN, 10, AL_RIGHT_SPEAKER_GAIN, 15};
    ALsetparams(AL_DEFAULT_DEVICE, pairs, 4);
    EXPECT_EQ(QD_AudioPlay::get_volume(), 12);
    EXPECT_EQ(QD_AudioPlay::set_rate(44100), 0);
}

TEST_F(AudioPlay, PlaysThroughAQueueThatKeepsTheNewestTwoFrames)
{
    std::vector<int16_t> samples(2000);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<int16_t>(i + 1);

    QD_AudioPlay play;
    play.close(); // never opened: nothing happens
    EXPECT_EQ(play.play(samples.data(), 800), 0) << "0 whatever becomes of it";
    ASSERT_EQ(play.open(), 0);
    EXPECT_EQ(play.play(samples.data(), 2000), 0);

    const std::string path = dir_ / "port-1.wav";
    std::vector<int16_t> heard;
    EXPECT_TRUE(qd_wait_for([&] {
        SF_INFO info {};
        SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
        if (!file)
            return false;
        heard.resize(static_cast<size_t>(info.frames));
        sf_read_short(file, heard.data(), info.frames);
        sf_close(file);
        return heard.size() == 1600;
    }));
    EXPECT_EQ(heard, std::vector(samples.begin() + 400, samples.end()));

    play.close();
    EXPECT_FALSE(play.port);
    EXPECT_FALSE(play.conf);
    play.close();
}
