#include "platform/al/port.h"

#include <functional>
#include <gtest/gtest.h>
#include <numeric>
#include <thread>

using namespace std::chrono_literals;

namespace {

/// Time passes only while somebody waits, in beats of 10 ms.
class Beat_Clock : public QD_Clock {
public:
    Time now() const override { return now_; }
    bool wait(const QD_Wake& wake, Time until) const override
    {
        while (now_ < until && !wake.wait(0)) {
            now_ += 10ms;
            if (device)
                device();
        }
        return wake.wait(0);
    }
    void pass(std::chrono::milliseconds time) { now_ += time; }

    std::function<void()> device; // called at each beat

private:
    mutable Time now_ {1h};
};

std::vector<int16_t> counting(int16_t& next, size_t count)
{
    std::vector<int16_t> samples(count);
    std::iota(samples.begin(), samples.end(), next);
    next = static_cast<int16_t>(next + count);
    return samples;
}

class PortTest : public testing::Test {
protected:
    /// Reads a frame and returns how many milliseconds it took.
    long read()
    {
        const auto begin = clock_.now();
        port_.read(frame_);
        return static_cast<long>((clock_.now() - begin) / 1ms);
    }
    /// How many samples at the front of the frame are not silence.
    size_t sound() const
    {
        size_t count = 0;
        while (count < frame_.size() && frame_[count] != 0)
            ++count;
        return count;
    }
    void start_device()
    {
        clock_.device = [this] { port_.write(counting(next_, 80)); };
    }

    Beat_Clock clock_;
    QD_Al_Port port_ {QD_Al_Port::CAPTURE, 1610, clock_}; // no multiple of a block
    std::vector<int16_t> frame_ = std::vector<int16_t>(800, 99);
    int16_t next_ = 1;
};

}

TEST_F(PortTest, WithoutADeviceSilenceComesAtThePaceOfTheClock)
{
    EXPECT_EQ(read(), 100);
    EXPECT_EQ(frame_, std::vector<int16_t>(800));
    clock_.pass(30ms);
    EXPECT_EQ(read(), 70) << "time used between frames counts";
    clock_.pass(1000ms);
    EXPECT_EQ(read(), 100) << "but a long absence is not made up for in a burst";
}

TEST_F(PortTest, ADeviceThatStopsCostsOneGraceAndComesBackByItself)
{
    start_device();
    EXPECT_EQ(read(), 100);

    int beats = 0;
    clock_.device = [&] {
        if (++beats <= 4)
            port_.write(counting(next_, 80));
    };
    EXPECT_EQ(read(), 150);
    EXPECT_EQ(sound(), 320u) << "what arrived is not lost";
    EXPECT_EQ(frame_[799], 0);
    EXPECT_EQ(read(), 50) << "on the clock's schedule again";
    EXPECT_EQ(sound(), 0u);

    start_device();
    read();
    const int16_t next = next_;
    EXPECT_EQ(read(), 100);
    EXPECT_EQ(frame_.front(), next);
    EXPECT_EQ(sound(), 800u);
}

TEST_F(PortTest, AfterAnOverrunReadsFreshSamplesOnly)
{
    start_device();
    read();
    for (int i = 0; i < 21; ++i) // one block more than the queue holds
        port_.write(counting(next_, 80));
    const int16_t fresh = next_;
    EXPECT_EQ(read(), 100);
    EXPECT_EQ(frame_.front(), fresh);

    for (int i = 0; i < 15; ++i) // late, and nothing lost
        port_.write(counting(next_, 80));
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(frame_.front(), fresh + 800);
    EXPECT_EQ(read(), 50);
    EXPECT_EQ(sound(), 800u);
}

TEST(PlayPort, DropsWhatIsTooOldToPlay)
{
    Beat_Clock clock;
    QD_Al_Port port(QD_Al_Port::PLAY, 1600, clock);
    std::vector<int16_t> out(1600);
    int16_t next = 0;

    port.write(counting(next, 800));
    clock.pass(150ms);
    port.drop_stale();
    EXPECT_EQ(port.take(out), 800u) << "the first packet waits for the device";

    port.write(counting(next, 1000));
    port.write(counting(next, 700)); // a hundred more than it holds
    port.drop_stale();
    EXPECT_EQ(port.take(out), 800u);
    EXPECT_EQ(out.front(), next - 800) << "the newest frame of a full queue";

    port.write(counting(next, 800));
    clock.pass(201ms);
    port.drop_stale();
    EXPECT_EQ(port.take(out), 0u);
}

TEST(Port, ReaderAndDeviceOnTheirOwnThreadsLoseNothing)
{
    QD_Al_Port port(QD_Al_Port::CAPTURE, 1600);
    std::thread device([&port] {
        int16_t next = 1;
        for (int i = 0; i < 30; ++i) {
            port.write(counting(next, 80));
            std::this_thread::sleep_for(5ms); // a device that is fast by half
        }
    });
    std::vector<int16_t> heard(2400);
    for (size_t at = 0; at < heard.size(); at += 800)
        port.read(std::span(heard).subspan(at, 800));
    device.join();
    int16_t next = 1;
    EXPECT_EQ(heard, counting(next, 2400));
}
