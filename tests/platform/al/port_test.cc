#include "platform/al/port.h"

#include <functional>
#include <gtest/gtest.h>
#include <numeric>

using namespace std::chrono_literals;

namespace {

/// Time passes only while somebody waits, in beats of 10 ms.
struct Beat_Clock : QD_Clock {
    Time now() const override { return time; }
    bool wait(const QD_Wake& wake, Time until) const override
    {
        while (time < until && !wake.wait(0)) {
            time += 10ms;
            beat();
        }
        return wake.wait(0);
    }

    std::function<void()> beat = [] {};
    mutable Time time {1h};
};

using Read = std::vector<long>;

struct PortTest : testing::Test {
    /// Writes so many samples, which count up.
    void write(size_t count)
    {
        std::vector<int16_t> samples(count);
        std::iota(samples.begin(), samples.end(), sample);
        sample = static_cast<int16_t>(sample + count);
        port.write(samples);
    }
    /// Reads a frame: milliseconds it took, its first sample, how many come before silence.
    Read read()
    {
        const auto begin = clock.now();
        port.read(frame);
        return {(clock.now() - begin) / 1ms, frame[0], std::ranges::find(frame, 0) - frame.begin()};
    }

    Beat_Clock clock;
    QD_Al_Port port {QD_Al_Port::CAPTURE, 1610, clock}; // no multiple of a block
    std::vector<int16_t> frame = std::vector<int16_t>(800, 99);
    int16_t sample = 1;
};

}

TEST_F(PortTest, ADeviceThatStopsCostsOneGraceAndThenSilenceComesAtThePaceOfTheClock)
{
    clock.beat = [&] {
        if (sample <= 1120)
            write(80);
    };
    EXPECT_EQ(read(), (Read {100, 1, 800}));
    EXPECT_EQ(read(), (Read {150, 801, 320})) << "what arrived is not lost";
    EXPECT_EQ(read(), (Read {50, 0, 0})) << "on the clock's schedule again";
    clock.time += 30ms;
    EXPECT_EQ(read(), (Read {70, 0, 0})) << "time used between frames counts";
    clock.time += 1000ms;
    EXPECT_EQ(read(), (Read {100, 0, 0})) << "but a long absence is not made up for in a burst";
    clock.beat = [&] { write(80); };
    read();
    const int16_t next = sample;
    EXPECT_EQ(read(), (Read {100, next, 800})) << "it comes back by itself";
}

TEST_F(PortTest, AfterAnOverrunReadsFreshSamplesOnly)
{
    clock.beat = [&] { write(80); };
    read();
    write(21 * 80); // one block more than the queue holds
    const int16_t fresh = sample;
    EXPECT_EQ(read(), (Read {100, fresh, 800}));
    write(1200); // late, and nothing lost
    EXPECT_EQ(read(), (Read {0, fresh + 800, 800}));
    EXPECT_EQ(read(), (Read {50, fresh + 1600, 800}));
}

TEST_F(PortTest, DropsWhatIsTooOldToPlay)
{
    write(1000);
    write(700); // more than it holds
    port.drop_stale();
    EXPECT_EQ(port.take(frame), 800u);
    EXPECT_EQ(frame[0], sample - 800) << "the newest frame of a full queue";
    write(800);
    clock.time += 201ms;
    port.drop_stale();
    EXPECT_EQ(port.take(frame), 0u);
}
