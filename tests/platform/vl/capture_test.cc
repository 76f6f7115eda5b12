#include "platform/vl/capture.h"

#include "tests/support/wait.h"

#include <atomic>
#include <cstring>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <thread>

using namespace std::chrono_literals;

namespace {

/// What the camera is told to do, and what it did.
struct Script {
    std::atomic<bool> opens = true;
    std::atomic<int> pictures = 1 << 30; // so many more, then `after`
    std::atomic<int> after = 0;          // what read() returns then
    std::atomic<bool> blocks = false;    // read() does not return
    std::atomic<int> opened = 0, closed = 0;
};

/// Its pictures are of one value, which counts up from 1.
class Scripted_Camera : public QD_Camera {
public:
    explicit Scripted_Camera(std::shared_ptr<Script> script) : script_(std::move(script)) {}

    int open() override
    {
        ++script_->opened;
        return script_->opens ? 0 : -1;
    }
    int read(char* out) override
    {
        do
            std::this_thread::sleep_for(2ms);
        while (script_->blocks);
        if (script_->pictures == 0)
            return script_->after;
        --script_->pictures;
        memset(out, ++shown_ % 256, QD_PICTURE_SIZE);
        return 1;
    }
    void close() override { ++script_->closed; }

private:
    std::shared_ptr<Script> script_;
    int shown_ = 0;
};

class Capture : public testing::Test {
protected:
    void start(QD_Capture_Times times = {20ms, 100ms, 5000ms, 60000ms})
    {
        capture_ = std::make_unique<QD_Capture>(std::make_unique<Scripted_Camera>(script_), times);
        ASSERT_EQ(capture_->start(), 0);
        capture_->set_rate(1000);
    }

    // Whether the next picture is the camera's, and not the test card.
    bool from_camera()
    {
        std::string picture(QD_PICTURE_SIZE, '\0');
        capture_->get(picture.data());
        return picture == std::string(QD_PICTURE_SIZE, picture[0]);
    }

    std::shared_ptr<Script> script_ = std::make_shared<Script>();
    std::unique_ptr<QD_Capture> capture_;
};

}

TEST_F(Capture, PicturesAreWholeNewAndEvenlySpaced)
{
    start();
    capture_->set_rate(50);
    std::string before(QD_PICTURE_SIZE, '\0');
    capture_->get(before.data());
    const auto begin = QD_Clock::real().now();
    for (int i = 0; i < 20; ++i) {
        std::string picture = before;
        capture_->get(picture.data());
        EXPECT_EQ(picture, std::string(QD_PICTURE_SIZE, picture[0])) << "whole";
        EXPECT_NE(picture[0], before[0]);
        before = picture;
    }
    const auto took = QD_Clock::real().now() - begin;
    EXPECT_GE(took, 390ms);
    EXPECT_LT(took, 800ms);
}

TEST_F(Capture, TheTestCardStandsInForACameraThatIsMissingOrFailsUntilItComes)
{
    script_->opens = false;
    start();
    EXPECT_FALSE(from_camera());
    EXPECT_TRUE(qd_wait_for([&] { return script_->opened >= 3; }));
    const auto begin = QD_Clock::real().now();
    EXPECT_FALSE(from_camera());
    EXPECT_LT(QD_Clock::real().now() - begin, 90ms) << "known to be missing: no waiting";
    script_->opens = true;
    EXPECT_TRUE(qd_wait_for([&] { return from_camera(); }));

    script_->after = -1;
    script_->pictures = 0;
    const int opened = script_->opened;
    EXPECT_TRUE(qd_wait_for([&] { return !from_camera() && script_->opened >= opened + 2; }));
    EXPECT_GE(script_->closed, 2) << "closed before it is opened again";
    script_->pictures = 1 << 30;
    EXPECT_TRUE(qd_wait_for([&] { return from_camera(); }));
}

TEST_F(Capture, AStalledCameraIsWaitedForOnceAndNoticedWhenItGoesOn)
{
    script_->pictures = 1;
    start();
    EXPECT_TRUE(from_camera());
    auto begin = QD_Clock::real().now();
    EXPECT_FALSE(from_camera());
    EXPECT_GE(QD_Clock::real().now() - begin, 100ms);
    EXPECT_LT(QD_Clock::real().now() - begin, 1000ms);
    begin = QD_Clock::real().now();
    for (int i = 0; i < 5; ++i)
        EXPECT_FALSE(from_camera());
    EXPECT_LT(QD_Clock::real().now() - begin, 100ms);
    script_->pictures = 1 << 30;
    EXPECT_TRUE(qd_wait_for([&] { return from_camera(); }));
    EXPECT_EQ(script_->opened, 1);
}

TEST_F(Capture, ACameraIsOpenedAnewWhenItStaysSilentAndLetGoWhenNobodyWatches)
{
    script_->pictures = 1;
    start({20ms, 20ms, 50ms, 60000ms});
    EXPECT_TRUE(qd_wait_for([&] {
        from_camera();
        return script_->opened >= 3;
    }));

    script_ = std::make_shared<Script>();
    start({20ms, 1000ms, 5000ms, 60ms});
    EXPECT_TRUE(from_camera());
    EXPECT_TRUE(qd_wait_for([&] { return script_->closed == 1; }));
    EXPECT_EQ(script_->opened, 1);
    EXPECT_TRUE(from_camera()) << "opened again when asked, and waited for";
    EXPECT_EQ(script_->opened, 2);
}

TEST_F(Capture, AReaderStuckInItsDeviceHoldsNobodyUp)
{
    script_->blocks = true;
    start();
    EXPECT_FALSE(from_camera());
    const auto begin = QD_Clock::real().now();
    testing::internal::CaptureStderr();
    capture_.reset();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("does not end"));
    EXPECT_LT(QD_Clock::real().now() - begin, 4s);
    script_->blocks = false; // it ends on its own now
    EXPECT_TRUE(qd_wait_for([&] { return script_->closed == 1; }));
}
