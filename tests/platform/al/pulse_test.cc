#include "platform/al/al.h"
#include "platform/al/pulse.h"
#include "tests/support/pulse_server.h"
#include "tests/support/signal_math.h"

#include <cstdlib>
#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

/// One server and one fresh audio library for each test.
class Pulse : public testing::Test {
protected:
    Pulse()
    {
        setenv("QD_MIC", "pulse:speaker.monitor", 1);
        setenv("QD_SPEAKER", "pulse:speaker", 1);
    }
    ~Pulse() override
    {
        for (ALport port : ports_)
            ALcloseport(port);
        ALfreeconfig(config_);
        qd_al_shutdown();
    }

    ALport open(const char* direction)
    {
        ports_.push_back(ALopenport(direction, direction, config_));
        return ports_.back();
    }

    /// Plays a tone until the microphone hears it as loud as it was played; at most for 10 s.
    static bool sounds(ALport speaker, ALport mic)
    {
        const auto tone = qd_sine(400, 800); // whole waves
        std::vector<int16_t> heard(800);
        for (int frame = 0; frame < 100; ++frame) {
            ALwritesamps(speaker, tone.data(), 800);
            ALreadsamps(mic, heard.data(), 800);
            if (std::abs(qd_amplitude(heard, 400) - 8000) < 400)
                return true;
        }
        return false;
    }

    /// Whether the server comes to have these gains of all "sink-inputs" or "source-outputs".
    static bool become(const std::string& kind, const std::vector<int>& expected)
    {
        return qd_wait_for([&] {
            std::istringstream volumes(qd_output(
                "pactl list " + kind + " | grep -o 'front-[a-z]*: *[0-9]*' | sed 's/.* //'"));
            std::vector<int> gains;
            for (uint32_t volume = 0; volumes >> volume;)
                gains.push_back(qd_pulse_gain(volume));
            return gains == expected;
        });
    }

    QD_Pulse_Server server_;
    ALconfig config_ = ALnewconfig();
    std::vector<ALport> ports_;
};

}

TEST(PulseVolume, EachGainComesBackExactly)
{
    for (int gain = 0; gain <= 255; ++gain)
        EXPECT_EQ(qd_pulse_gain(qd_pulse_volume(gain)), gain);
    EXPECT_EQ(qd_pulse_volume(255), 65536u);
}

TEST_F(Pulse, GainsReachTheStreamsThatAreOpenAndThoseToCome)
{
    // Set while there is no server at all.
    const long before[] = {AL_LEFT_SPEAKER_GAIN, 51, AL_RIGHT_SPEAKER_GAIN, 204,
        AL_LEFT_INPUT_ATTEN, 55, AL_RIGHT_INPUT_ATTEN, 0};
    ASSERT_EQ(ALsetparams(AL_DEFAULT_DEVICE, before, 8), 0);
    open("w");
    open("r");
    ASSERT_TRUE(server_.start());
    EXPECT_TRUE(become("sink-inputs", {51, 204}));
    EXPECT_TRUE(become("source-outputs", {200, 255}));

    const long after[] = {AL_LEFT_SPEAKER_GAIN, 1, AL_RIGHT_INPUT_ATTEN, 254};
    ASSERT_EQ(ALsetparams(AL_DEFAULT_DEVICE, after, 4), 0);
    EXPECT_TRUE(become("sink-inputs", {1, 204}));
    EXPECT_TRUE(become("source-outputs", {200, 1}));
    open("w");
    EXPECT_TRUE(become("sink-inputs", {1, 204, 1, 204}));
}

TEST_F(Pulse, AMissingSinkIsOneLineAndTheDefault)
{
    ASSERT_TRUE(server_.start());
    setenv("QD_SPEAKER", "pulse:trumpet", 1);
    testing::internal::CaptureStderr();
    const bool heard = sounds(open("w"), open("r"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
        "QD_SPEAKER=pulse:trumpet: PulseAudio has no such sink, the default is used\n");
    EXPECT_TRUE(heard);
}

TEST_F(Pulse, AHundredPortsOpenAndCloseWithoutWaiting)
{
    ASSERT_TRUE(server_.start());
    const auto count = [] { return qd_output("pactl list short sink-inputs | wc -l"); };
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i)
        open("w");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 500ms);
    EXPECT_TRUE(qd_wait_for([&] { return count() == "100\n"; }));
    for (ALport port : ports_)
        ALcloseport(port);
    ports_.clear();
    EXPECT_TRUE(qd_wait_for([&] { return count() == "0\n"; }));
}
