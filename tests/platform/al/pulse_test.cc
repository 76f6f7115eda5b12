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

    /// Plays a second of `samples` again and again on `port`, at the pace of the
    /// microphone, until what the microphone hears passes; at most for 10 s.
    template <typename Passes>
    bool play_until(ALport port, const std::vector<int16_t>& samples, ALport mic, Passes passes)
    {
        const auto end = std::chrono::steady_clock::now() + 10s;
        std::vector<int16_t> heard;
        std::vector<int16_t> frame(800);
        for (size_t at = 0; std::chrono::steady_clock::now() < end; at = (at + 800) % 8000) {
            ALwritesamps(port, &samples[at], 800);
            ALreadsamps(mic, frame.data(), 800);
            heard.insert(heard.end(), frame.begin(), frame.end());
            if (heard.size() > 4000)
                heard.erase(heard.begin(), heard.begin() + 800);
            if (heard.size() == 4000 && passes(std::span<const int16_t>(heard)))
                return true;
        }
        return false;
    }

    /// The gains of all sink inputs ("sink-inputs") or source outputs, as the server has them.
    std::vector<int> gains(const std::string& kind)
    {
        std::string text;
        server_.run({"pactl", "list", kind}, &text);
        std::vector<int> found;
        for (size_t at = 0; (at = text.find("front-", at)) != std::string::npos; ++at) {
            const size_t colon = text.find(": ", at);
            const size_t slash = text.find('/', at); // "front-left: 13107 /  20% / ..."
            if (colon < slash && slash < text.find('\n', at))
                found.push_back(
                    qd_pulse_gain(static_cast<uint32_t>(std::atoi(text.c_str() + colon + 2))));
        }
        return found;
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
    EXPECT_EQ(qd_pulse_volume(0), 0u);
    EXPECT_EQ(qd_pulse_volume(255), 65536u);
}

TEST_F(Pulse, WhatIsWrittenIsHeardAtTheSinksMonitor)
{
    ASSERT_TRUE(server_.start());
    QD_Pulse_Recording recording(server_, QD_Pulse_Server::SPEAKER_MONITOR);
    ASSERT_TRUE(recording.wait_for(800));

    auto sweep = qd_sine(300, 800);
    for (size_t i = 0; i < sweep.size(); ++i)
        sweep[i] = static_cast<int16_t>(8000 * std::sin(0.2 * static_cast<double>(i * i) / 300));
    ALwritesamps(open("w"), sweep.data(), 800);
    EXPECT_TRUE(qd_wait_for([&] { return qd_correlation(sweep, recording.samples()) > 0.99; }));
}

TEST_F(Pulse, TwoPortsAreMixedAndAClosedOneIsNot)
{
    ASSERT_TRUE(server_.start());
    ALport low = open("w");
    ALport high = open("w");
    ALport mic = open("r");
    const auto tone = qd_sine(400, 8000);
    const auto other = qd_sine(1000, 8000, 4000);
    EXPECT_TRUE(play_until(low, tone, mic, [&](std::span<const int16_t> heard) {
        ALwritesamps(high, other.data(), 800);
        return std::abs(qd_amplitude(heard, 400) - 8000) < 400
            && std::abs(qd_amplitude(heard, 1000) - 4000) < 400;
    }));
    ALcloseport(high);
    std::erase(ports_, high);
    EXPECT_TRUE(play_until(low, tone, mic, [&](std::span<const int16_t> heard) {
        return std::abs(qd_amplitude(heard, 400) - 8000) < 400 && qd_amplitude(heard, 1000) < 40;
    }));
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
    const auto become = [&](const char* kind, const std::vector<int>& expected) {
        return qd_wait_for([&] { return gains(kind) == expected; });
    };
    EXPECT_TRUE(become("sink-inputs", {51, 204}));
    EXPECT_TRUE(become("source-outputs", {200, 255}));

    const long after[] = {AL_LEFT_SPEAKER_GAIN, 1, AL_RIGHT_INPUT_ATTEN, 254};
    ASSERT_EQ(ALsetparams(AL_DEFAULT_DEVICE, after, 4), 0);
    EXPECT_TRUE(become("sink-inputs", {1, 204}));
    EXPECT_TRUE(become("source-outputs", {200, 1}));
    open("w");
    EXPECT_TRUE(become("sink-inputs", {1, 204, 1, 204}));
}

TEST_F(Pulse, ADyingServerKeepsThePaceAndSoundReturnsWithIt)
{
    ASSERT_TRUE(server_.start());
    ALport speaker = open("w");
    ALport mic = open("r");
    const auto tone = qd_sine(400, 8000);
    const auto sounds = [](std::span<const int16_t> heard) {
        return std::abs(qd_amplitude(heard, 400) - 8000) < 400;
    };
    ASSERT_TRUE(play_until(speaker, tone, mic, sounds));

    server_.crash();
    const auto begin = std::chrono::steady_clock::now();
    std::vector<int16_t> frame(800);
    for (int i = 0; i < 10; ++i) {
        ALwritesamps(speaker, tone.data(), 800);
        ALreadsamps(mic, frame.data(), 800);
    }
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(took, 700ms); // up to two frames were still in the queue
    EXPECT_LT(took, 1400ms);
    EXPECT_EQ(frame, std::vector<int16_t>(800));

    ASSERT_TRUE(server_.start());
    EXPECT_TRUE(play_until(speaker, tone, mic, sounds));
}

TEST_F(Pulse, AMissingSinkIsOneLineAndTheDefault)
{
    ASSERT_TRUE(server_.start());
    setenv("QD_SPEAKER", "pulse:trumpet", 1);
    testing::internal::CaptureStderr();
    const auto tone = qd_sine(400, 8000);
    const bool heard = play_until(open("w"), tone, open("r"), [](std::span<const int16_t> samples) {
        return std::abs(qd_amplitude(samples, 400) - 8000) < 400;
    });
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
        "QD_SPEAKER=pulse:trumpet: PulseAudio has no such sink, the default is used\n");
    EXPECT_TRUE(heard);
}

TEST_F(Pulse, AHundredPortsOpenAndCloseWithoutWaiting)
{
    ASSERT_TRUE(server_.start());
    const auto count = [&] {
        std::string text;
        server_.run({"pactl", "list", "short", "sink-inputs"}, &text);
        return std::count(text.begin(), text.end(), '\n');
    };
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 100; ++i)
        open("w");
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 500ms);
    EXPECT_TRUE(qd_wait_for([&] { return count() == 100; }));
    for (ALport port : ports_)
        ALcloseport(port);
    ports_.clear();
    EXPECT_TRUE(qd_wait_for([&] { return count() == 0; }));
}
