#include "platform/al/headless.h"
#include "tests/support/signal_math.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wav.h"

#include <gtest/gtest.h>
#include <memory>

using namespace std::chrono_literals;

namespace {

const QD_Clock::Time START {1h};

std::shared_ptr<QD_Al_Port> make_port(QD_Al_Port::Side side)
{
    return std::make_shared<QD_Al_Port>(side, 1600);
}

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
    const auto loud = qd_sine(440, 900, 30000); // ends within a block
    const auto other = qd_sine(450, 640, 30000);
    {
        auto now = START;
        QD_File_Speaker speaker(dir.path());
        auto first = make_port(QD_Al_Port::PLAY);
        auto second = make_port(QD_Al_Port::PLAY);
        speaker.attach(first);
        speaker.attach(second);
        speaker.advance(now);
        for (int beat = 0; beat < 20; ++beat) {
            if (beat == 3)
                first->write(loud);
            if (beat == 5) {
                second->write(other);
                second->close();
            }
            speaker.advance(now += 10ms);
        }
    }
    EXPECT_EQ(qd_read_wav(dir.file("port-1.wav")), loud);
    EXPECT_EQ(qd_read_wav(dir.file("port-2.wav")), std::vector(other.begin(), other.begin() + 80))
        << "a closed port plays no more than the block under way";

    std::vector<int16_t> mix(20 * 80);
    std::copy(loud.begin(), loud.end(), mix.begin() + 240);
    for (size_t i = 0; i < 80; ++i)
        mix[400 + i] = static_cast<int16_t>(std::clamp(loud[160 + i] + other[i], -32768, 32767));
    EXPECT_EQ(*std::max_element(mix.begin(), mix.end()), 32767);
    EXPECT_EQ(qd_read_wav(dir.file("mix.wav")), mix);
}

TEST(FileSpeaker, HeadersAreValidWhileItRunsAndTheMixKeepsRealTimeThroughAStall)
{
    QD_Temp_Dir dir;
    {
        QD_File_Speaker speaker(dir.path());
        auto port = make_port(QD_Al_Port::PLAY);
        speaker.attach(port);
        auto now = START;
        speaker.advance(now);
        EXPECT_TRUE(qd_read_wav(dir.file("port-1.wav")).empty());
        for (int i = 0; i < 110; ++i) {
            port->write(std::vector<int16_t>(80, 1000));
            speaker.advance(now += 10ms);
        }
        EXPECT_EQ(qd_read_wav(dir.file("port-1.wav")), std::vector<int16_t>(8000, 1000));
        EXPECT_EQ(qd_read_wav(dir.file("mix.wav")), std::vector<int16_t>(8000, 1000));
        speaker.advance(now += 500ms);
    }
    EXPECT_EQ(qd_read_wav(dir.file("mix.wav")).size(), 160 * 80u);
}
