#include "platform/al/headless.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wav.h"

#include <gtest/gtest.h>
#include <memory>
#include <sys/stat.h>

using namespace std::chrono_literals;

constexpr QD_Clock::Time START {1h};

TEST(HeadlessMic, LatenessIsMadeUpForWithinLimitsAndNeverInABurst)
{
    QD_Synthetic_Mic mic(qd_tone_source(100));
    const auto port = std::make_shared<QD_Al_Port>(QD_Al_Port::CAPTURE, 1600);
    std::vector<int16_t> out(1600);
    mic.attach(port);
    EXPECT_EQ(mic.advance(START), START + 10ms);

    // 30 ms late: the beats are absolute, the missing three come at once.
    auto now = START + 40ms;
    while (mic.advance(now) <= now) {}
    EXPECT_EQ(port->take(out), 320u);
    now += 3s;
    EXPECT_EQ(mic.advance(now), now + 10ms);
    EXPECT_EQ(port->take(out), 80u);
}

TEST(FileSpeaker, WritesEachPortBitExactlyAndTheSaturatedMixInRealTimeThroughAStall)
{
    const QD_Temp_Dir dir;
    const std::vector<short> loud(8840, 30000); // ends within a block
    const auto first = std::make_shared<QD_Al_Port>(QD_Al_Port::PLAY, 9000);
    const auto second = std::make_shared<QD_Al_Port>(QD_Al_Port::PLAY, 9000);
    {
        QD_File_Speaker speaker(dir.path());
        speaker.attach(first);
        speaker.attach(second);
        auto now = START;
        speaker.advance(now);
        first->write(loud);
        for (int beat = 0; beat < 110; ++beat) {
            if (beat == 50) {
                second->write(loud);
                second->close(); // which plays no more than the block under way
            }
            speaker.advance(now += 10ms);
        }
        EXPECT_EQ(qd_read_wav(dir / "mix.wav").size(), 8000u) << "valid while it runs";
        speaker.advance(now += 500ms);
        speaker.attach(std::make_shared<QD_Al_Port>(QD_Al_Port::PLAY, 80)); // and never played
    }
    std::vector<short> mix(160 * 80);
    std::fill_n(mix.begin(), 110 * 80, 30000);
    std::fill_n(mix.begin() + 50 * 80, 80, 32767);
    std::fill_n(mix.begin() + 159 * 80, 40, 30000);
    EXPECT_EQ(qd_read_wav(dir / "mix.wav"), mix);
    EXPECT_EQ(qd_read_wav(dir / "port-1.wav"), loud);
    EXPECT_EQ(std::filesystem::file_size(dir / "port-3.wav"), 44u);
    EXPECT_EQ(qd_read_wav(dir / "port-2.wav"), std::vector<short>(80, 30000));
}

TEST(FileSpeaker, KeepsOneFileForEachStreamHoweverOftenItsPortsCloseAndSomeFilesAtMost)
{
    const QD_Temp_Dir dir;
    auto now = START;
    {
        QD_File_Speaker speaker(dir.path());
        const auto say = [&](long stream, short value, int beats) {
            const auto port = std::make_shared<QD_Al_Port>(QD_Al_Port::PLAY, 1600);
            port->set_stream(stream);
            speaker.attach(port);
            port->write(std::vector<short>(80, value));
            for (int i = 0; i < beats; ++i)
                speaker.advance(now += 10ms);
            port->close();
        };
        speaker.advance(now);
        say(7, 1, 3); // and its port is still there when it opens the next
        say(7, 2, 3);
        say(8, 3, 3);
        say(0, 4, 3);
        say(7, 5, 3);
        say(0, 6, 3);
        for (int i = 0; i < 1100; ++i)
            say(100 + i, 9, 1);
        say(8, 7, 3);
    }
    const auto heard = [&](int port) {
        const auto all = qd_read_wav(dir / "port-" + std::to_string(port) + ".wav");
        std::string values;
        for (size_t i = 0; i < all.size(); i += 80)
            values += static_cast<char>('0' + all[i]);
        return values;
    };
    EXPECT_EQ(heard(1), "125");
    EXPECT_EQ(heard(2), "37");
    EXPECT_EQ(heard(3) + heard(4), "46") << "of no stream";
    EXPECT_FALSE(std::filesystem::exists(dir / "port-1001.wav"));
    struct stat about {};
    EXPECT_EQ(::stat((dir / "mix.wav").c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 0777, 0600u) << "what was said is the user's alone";
}
