#include "platform/al/headless.h"
#include "tests/support/signal_math.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wait.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <memory>

using namespace std::chrono_literals;

namespace {

const QD_Clock::Time START {1h};

std::vector<int16_t> read_wav(const std::string& path)
{
    SF_INFO info {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
        return {-1};
    EXPECT_EQ(info.samplerate, 8000);
    EXPECT_EQ(info.channels, 1);
    EXPECT_EQ(info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    std::vector<int16_t> samples(static_cast<size_t>(info.frames));
    sf_read_short(file, samples.data(), info.frames);
    sf_close(file);
    return samples;
}

void write_wav(
    const std::string& path, const std::vector<int16_t>& samples, int rate = 8000, int channels = 1)
{
    SF_INFO info {};
    info.samplerate = rate;
    info.channels = channels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    sf_write_short(file, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(file);
}

std::shared_ptr<QD_Al_Port> make_port(QD_Al_Port::Side side)
{
    return std::make_shared<QD_Al_Port>(side, 1600);
}

/// Drives the device over so many beats and returns what the port got.
std::vector<int16_t> listen(QD_Headless& device, QD_Al_Port& port, QD_Clock::Time& now, int beats)
{
    std::vector<int16_t> heard;
    std::vector<int16_t> block(QD_Headless::BLOCK);
    for (int i = 0; i < beats; ++i) {
        now += 10ms;
        device.advance(now);
        if (port.take(block) == block.size())
            heard.insert(heard.end(), block.begin(), block.end());
    }
    return heard;
}

}

TEST(HeadlessMic, FileLoopsBitExactly)
{
    QD_Temp_Dir dir;
    const auto sound = qd_sine(440, 1003); // no multiple of a block
    write_wav(dir / "in.wav", sound);
    std::string why;
    QD_Synthetic_Mic mic(qd_file_source(dir / "in.wav", why));
    auto port = make_port(QD_Al_Port::CAPTURE);
    mic.attach(port);
    auto now = START;
    mic.advance(now);
    const auto heard = listen(mic, *port, now, 60);
    ASSERT_EQ(heard.size(), 4800u);
    for (size_t i = 0; i < heard.size(); ++i)
        ASSERT_EQ(heard[i], sound[i % sound.size()]) << i;
}

TEST(HeadlessMic, ToneHasItsFrequencyAndHalfTheFullScale)
{
    QD_Synthetic_Mic mic(qd_tone_source(997));
    auto port = make_port(QD_Al_Port::CAPTURE);
    mic.attach(port);
    auto now = START;
    mic.advance(now);
    const auto heard = listen(mic, *port, now, 100);
    ASSERT_EQ(heard.size(), 8000u);
    EXPECT_NEAR(qd_amplitude(heard, 997), 16384, 2);
    EXPECT_LT(qd_amplitude(heard, 1000), 50);
}

TEST(HeadlessMic, LatenessIsMadeUpForWithinLimitsAndNeverInABurst)
{
    QD_Synthetic_Mic mic(qd_tone_source(100));
    auto port = make_port(QD_Al_Port::CAPTURE);
    std::vector<int16_t> out(1600);
    mic.attach(port);
    auto now = START;
    EXPECT_EQ(mic.advance(now), START + 10ms);
    EXPECT_EQ(mic.advance(START + 9ms), START + 10ms);
    EXPECT_EQ(port->take(out), 0u);

    // 30 ms late: the beats are absolute, the missing three come at once.
    now = START + 40ms;
    while (mic.advance(now) <= now) {}
    EXPECT_EQ(port->take(out), 320u);

    now += 3s;
    EXPECT_EQ(mic.advance(now), now + 10ms);
    EXPECT_EQ(port->take(out), 80u);
}

TEST(FileSpeaker, WritesEachPortBitExactlyAndTheSaturatedMix)
{
    QD_Temp_Dir dir;
    const auto loud = qd_sine(440, 800, 30000);
    const auto other = qd_sine(450, 640, 30000);
    auto now = START;
    {
        QD_File_Speaker speaker(dir.path());
        auto first = make_port(QD_Al_Port::PLAY);
        auto second = make_port(QD_Al_Port::PLAY);
        speaker.attach(first);
        speaker.attach(second);
        speaker.advance(now);
        const auto beats = [&](int count) {
            for (int i = 0; i < count; ++i)
                speaker.advance(now += 10ms);
        };
        beats(3);
        first->write(loud);
        beats(2);
        second->write(other);
        second->close();
        first->write(std::span(other).first(100)); // ends within a block
        beats(15);
    }
    auto expected = loud;
    expected.insert(expected.end(), other.begin(), other.begin() + 100);
    EXPECT_EQ(read_wav(dir / "port-1.wav"), expected);
    EXPECT_EQ(read_wav(dir / "port-2.wav"), std::vector(other.begin(), other.begin() + 80))
        << "a closed port plays no more than the block under way";

    std::vector<int16_t> mix(20 * 80);
    std::copy(expected.begin(), expected.end(), mix.begin() + 240);
    bool saturated = false;
    for (size_t i = 0; i < 80; ++i) {
        const int sum = expected[160 + i] + other[i];
        saturated = saturated || sum != std::clamp(sum, -32768, 32767);
        mix[400 + i] = static_cast<int16_t>(std::clamp(sum, -32768, 32767));
    }
    EXPECT_TRUE(saturated);
    EXPECT_EQ(read_wav(dir / "mix.wav"), mix);
}

TEST(FileSpeaker, MixKeepsRealTimeThroughAStall)
{
    QD_Temp_Dir dir;
    {
        QD_File_Speaker speaker(dir.path());
        speaker.attach(make_port(QD_Al_Port::PLAY));
        auto now = START;
        speaker.advance(now);
        speaker.advance(now += 10ms);
        speaker.advance(now += 500ms);
        speaker.advance(now += 10ms);
    }
    EXPECT_EQ(read_wav(dir / "mix.wav").size(), 52 * 80u);
}

TEST(FileSpeaker, HeadersAreValidWhileItRuns)
{
    QD_Temp_Dir dir;
    QD_File_Speaker speaker(dir.path());
    auto port = make_port(QD_Al_Port::PLAY);
    speaker.attach(port);
    auto now = START;
    speaker.advance(now);
    EXPECT_TRUE(read_wav(dir / "port-1.wav").empty());
    for (int i = 0; i < 110; ++i) {
        port->write(std::vector<int16_t>(80, 1000));
        speaker.advance(now += 10ms);
    }
    EXPECT_EQ(read_wav(dir / "port-1.wav"), std::vector<int16_t>(8000, 1000));
    EXPECT_EQ(read_wav(dir / "mix.wav"), std::vector<int16_t>(8000, 1000));
}

TEST(FileSpeaker, AHundredPortsOpenedInTheBackground)
{
    QD_Temp_Dir dir;
    {
        std::string why;
        auto speaker = qd_make_file_speaker(dir.path(), why);
        ASSERT_TRUE(speaker) << why;
        std::vector<std::shared_ptr<QD_Al_Port>> ports;
        for (int i = 0; i < 100; ++i) {
            ports.push_back(make_port(QD_Al_Port::PLAY));
            ports.back()->write(std::vector<int16_t>(160, static_cast<int16_t>(i + 1)));
            speaker->attach(ports.back());
        }
        std::vector<int16_t> none(1);
        EXPECT_TRUE(qd_wait_for([&] { return ports.back()->take(none) == 0; }));
    }
    for (int i = 0; i < 99; ++i) {
        EXPECT_EQ(read_wav(dir / ("port-" + std::to_string(i + 1) + ".wav")),
            std::vector<int16_t>(160, static_cast<int16_t>(i + 1)));
    }
}

TEST(HeadlessFiles, RefusesWhatIsNoSpeechSound)
{
    QD_Temp_Dir dir;
    write_wav(dir / "fast.wav", qd_sine(440, 100), 44100);
    write_wav(dir / "stereo.wav", qd_sine(440, 100), 8000, 2);
    write_wav(dir / "empty.wav", {});
    std::ofstream(dir / "text.wav") << "no sound at all";
    for (const char* name : {"fast.wav", "stereo.wav", "empty.wav", "text.wav", "missing.wav"}) {
        SCOPED_TRACE(name);
        std::string why;
        EXPECT_FALSE(qd_file_source(dir / name, why));
        EXPECT_FALSE(why.empty());
    }
}
