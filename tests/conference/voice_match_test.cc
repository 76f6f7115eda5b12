#include "conference/voice_match.h"

#include "tests/support/signal_math.h"

#include <gtest/gtest.h>

namespace {

QD_Voice voice(unsigned seed, size_t length)
{
    QD_Voice samples = qd_noise(seed);
    samples.resize(length);
    return samples;
}

QD_Voice heard_from(const QD_Voice& source, size_t begin, size_t length)
{
    QD_Voice heard;
    for (size_t i = 0; i < length; ++i)
        heard.push_back(source[(begin + i) % source.size()]);
    return heard;
}

const std::vector<QD_Voice> voices {
    voice(1, 9000), voice(2, 7777), voice(3, 1500)}; // the last shorter than a block

TEST(VoiceMatch, LoudnessDoesNotCountAndAMissingPacketSpoilsLittle)
{
    QD_Voice heard = heard_from(voices[0], 300, 80000);
    for (int16_t& sample : heard)
        sample = static_cast<int16_t>(sample / 4);
    heard.erase(heard.begin() + 30500, heard.begin() + 31300);
    heard.insert(heard.begin(), 4000, 0); // silence before it is not part of the voice
    const QD_Voice_Match match = qd_match_voice(heard, voices);
    EXPECT_EQ(match.voice_, 0);
    EXPECT_GT(match.correlation_, 0.96);
    EXPECT_LT(match.correlation_, 0.9999);
    EXPECT_NEAR(match.seconds_, 9.9, 0.01);
}

TEST(VoiceMatch, DoesNotTakeADamagedOrAForeignVoiceForFaithful)
{
    QD_Voice damaged = heard_from(voices[0], 0, 24000);
    const QD_Voice noise = voice(9, 24000);
    for (size_t i = 0; i < damaged.size(); ++i)
        damaged[i] = static_cast<int16_t>(damaged[i] / 2 + noise[i] / 4);
    const QD_Voice_Match match = qd_match_voice(damaged, voices);
    EXPECT_EQ(match.voice_, 0);
    EXPECT_NEAR(match.correlation_, 2 / std::sqrt(5), 0.02);

    EXPECT_EQ(qd_match_voice(noise, voices).voice_, -1);
    EXPECT_EQ(qd_match_voice(QD_Voice(8000, 0), voices).voice_, -1);
    EXPECT_EQ(qd_match_voice({}, voices).voice_, -1);
    EXPECT_EQ(qd_match_voice(noise, {}).voice_, -1);
}

}
