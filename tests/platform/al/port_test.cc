#include "platform/al/port.h"

#include <functional>
#include <gtest/gtest.h>
#include <numeric>

using namespace std::chrono_literals;

namespace {

/// Time passes only while somebody waits, in beats of 10 ms.
struct Beat_Clock : QD_Clock {
    Time now() const override { return now_; }
    bool wait(const QD_Wake& wake, Time until) const override
    {
        while (now_ < until && !wake.wait(0)) {
            now_ += 10ms;
            beat_();
        }
        return wake.wait(0);
    }

    std::function<void()> beat_ = [] {};
    mutable Time now_ {1h};
};

using Read = std::vector<long>;

struct PortTest : testing::Test {
    /// Writes so many samples, which count up.
    void write(size_t count)
    {
        std::vector<int16_t> samples(count);
        std::iota(samples.begin(), samples.end(), next_);
        next_ = static_cast<int16_t>(next_ + count);
        port_.write(samples);
    }
    /// Reads a frame: milliseconds it took, its first sample, how many come before silence.
    Read read()
    {
        const auto begin = clock_.now();
        port_.read(frame_);
        return {
            (clock_.now() - begin) / 1ms, frame_[0], std::ranges::find(frame_, 0) - frame_.begin()};
    }

    Beat_Clock clock_;
    QD_Al_Port port_ {QD_Al_Port::CAPTURE, 1610, clock_}; // no multiple of a block
    std::vector<int16_t> frame_ = std::vector<int16_t>(800, 99);
    int16_t next_ = 1;
};

}

TEST_F(PortTest, ADeviceThatStopsCostsOneGraceAndThenSilenceComesAtThePaceOfTheClock)
{
    clock_.beat_ = [&] {
        if (next_ <= 1120)
            write(80);
    };
    EXPECT_EQ(read(), (Read {100, 1, 800}));
    EXPECT_EQ(read(), (Read {150, 801, 320})) << "what arrived is not lost";
    EXPECT_EQ(read(), (Read {50, 0, 0})) << "on the clock's schedule again";
    clock_.now_ += 30ms;
    EXPECT_EQ(read(), (Read {70, 0, 0})) << "time used between frames counts";
    clock_.now_ += 1000ms;
    EXPECT_EQ(read(), (Read {100, 0, 0})) << "but a long absence is not made up for in a burst";
    clock_.beat_ = [&] { write(80); };
    read();
    const int16_t next = next_;
    EXPECT_EQ(read(), (Read {100, next, 800})) << "it comes back by itself";
}

TEST_F(PortTest, AfterAnOverrunReadsFreshSamplesOnly)
{
    clock_.beat_ = [&] { write(80); };
    read();
    write(21 * 80); // one block more than the queue holds
    const int16_t fresh = next_;
    EXPECT_EQ(read(), (Read {100, fresh, 800}));
    write(1200); // late, and nothing lost
    EXPECT_EQ(read(), (Read {0, fresh + 800, 800}));
    EXPECT_EQ(read(), (Read {50, fresh + 1600, 800}));
}

TEST_F(PortTest, DropsWhatIsTooOldToPlay)
{
    write(1000);
    write(700); // more than it holds
    port_.drop_stale();
    EXPECT_EQ(port_.take(frame_), 800u);
    EXPECT_EQ(frame_[0], next_ - 800) << "the newest frame of a full queue";
    write(800);
    clock_.now_ += 201ms;
    port_.drop_stale();
    EXPECT_EQ(port_.take(frame_), 0u);
}
