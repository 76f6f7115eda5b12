#include "platform/vl/capture.h"

#include "tests/support/wait.h"

#include <cstring>
#include <gmock/gmock.h>

using namespace std::chrono_literals;

namespace {

/// Does as it is told. Its pictures are white.
struct Scripted_Camera : QD_Camera {
    std::atomic<int> fails = 0;          // or -1: open() and read() do
    std::atomic<int> pictures = 1 << 30; // so many more
    std::atomic<bool> blocks = false;    // read() does not return
    std::atomic<int> opened = 0, closed = 0;
    std::shared_ptr<std::atomic<bool>> destroyed = std::make_shared<std::atomic<bool>>(false);

    ~Scripted_Camera() override { *destroyed = true; }

    int open() override
    {
        ++opened;
        return fails;
    }
    int read(char* out) override
    {
        do
            std::this_thread::sleep_for(2ms);
        while (blocks);
        if (fails != 0 || pictures == 0)
            return fails;
        --pictures;
        memset(out, '\xff', QD_PICTURE_SIZE);
        return 1;
    }
    void close() override { ++closed; }
};

struct Capture : testing::Test {
    void start(QD_Capture_Times times)
    {
        capture.emplace(std::unique_ptr<QD_Camera>(camera), times);
        ASSERT_EQ(capture->start(), 0);
        capture->set_rate(1000);
    }

    // Whether the next picture is the camera's, and not the test card.
    bool sees()
    {
        std::string picture(QD_PICTURE_SIZE, '\0');
        capture->get(picture.data());
        return picture == std::string(QD_PICTURE_SIZE, '\xff');
    }
    std::chrono::nanoseconds passed() { return QD_Clock::real().now() - begin; }

    Scripted_Camera* camera = new Scripted_Camera; // the capture's
    std::optional<QD_Capture> capture;
    QD_Clock::Time begin = QD_Clock::real().now();
};

}

TEST_F(Capture, TheTestCardStandsInForACameraThatIsMissingOrFailsUntilItComes)
{
    camera->fails = -1;
    start({20ms, 60s, 60s, 60s});
    EXPECT_TRUE(qd_wait_for([&] { return camera->opened >= 3; }));
    EXPECT_FALSE(sees());
    camera->fails = 0;
    EXPECT_TRUE(qd_wait_for([&] { return sees(); }));
    camera->fails = -1;
    EXPECT_TRUE(qd_wait_for([&] { return !sees() && camera->closed == 1; }));
    camera->fails = 0;
    EXPECT_TRUE(qd_wait_for([&] { return sees(); }));
    EXPECT_LT(passed(), 50s) << "known to be missing: no waiting";

    capture->set_rate(20);
    begin = QD_Clock::real().now();
    for (int i = 0; i < 10; ++i)
        EXPECT_TRUE(sees());
    EXPECT_GE(passed(), 400ms) << "one after the other";
}

TEST_F(Capture, AStalledCameraIsWaitedForOnceAndNoticedWhenItGoesOn)
{
    camera->pictures = 1;
    start({20ms, 500ms, 60s, 60s});
    EXPECT_TRUE(sees());
    EXPECT_FALSE(sees());
    EXPECT_GE(passed(), 500ms);
    begin = QD_Clock::real().now();
    for (int i = 0; i < 5; ++i)
        EXPECT_FALSE(sees());
    EXPECT_LT(passed(), 500ms);
    camera->pictures = 1;
    EXPECT_TRUE(qd_wait_for([&] { return sees(); }));
    EXPECT_FALSE(sees());
    EXPECT_GE(passed(), 500ms) << "waited for anew";
}

TEST_F(Capture, ACameraIsOpenedAnewWhenItStaysSilent)
{
    camera->pictures = 1;
    start({20ms, 20ms, 50ms, 60s});
    EXPECT_TRUE(qd_wait_for([&] { return !sees() && camera->opened >= 3; }));
}

TEST_F(Capture, ACameraIsLetGoWhenNobodyWatches)
{
    start({20ms, 5s, 5s, 60ms});
    EXPECT_TRUE(sees());
    EXPECT_TRUE(qd_wait_for([&] { return camera->closed == 1; }));
    EXPECT_TRUE(sees()) << "opened again when asked, and waited for";
    EXPECT_EQ(camera->opened, 2);
    EXPECT_TRUE(qd_wait_for([&] { return camera->closed == 2; }));
    begin = QD_Clock::real().now();
    capture.reset();
    EXPECT_LT(passed(), 2s) << "its reader is woken for the end";
}

TEST_F(Capture, AReaderStuckInItsDeviceHoldsNobodyUp)
{
    camera->blocks = true;
    start({20ms, 100ms, 60s, 60s});
    EXPECT_FALSE(sees());
    testing::internal::CaptureStderr();
    capture.reset();
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::HasSubstr("does not end"));
    EXPECT_LT(passed(), 5s);
    const auto destroyed = camera->destroyed;
    EXPECT_FALSE(*destroyed);
    camera->blocks = false; // it ends on its own now, and takes its camera with it
    EXPECT_TRUE(qd_wait_for([&] { return destroyed->load(); }));
}
