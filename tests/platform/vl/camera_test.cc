#include "platform/vl/camera.h"

#include "platform/vl/picture.h"
#include "tests/support/temp_dir.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

// The brightness of one point of the next picture, -1 if the camera fails.
int luma(QD_Camera& camera, int x, int y)
{
    std::string picture(QD_PICTURE_SIZE, '\0');
    int result = 0;
    for (int i = 0; i < 100 && result == 0; ++i)
        result = camera.read(picture.data());
    return result == 1 ? static_cast<uint8_t>(picture[static_cast<size_t>(y * 176 + x)]) : -1;
}

}

TEST(Camera, WhatIsNoCameraRefuses)
{
    QD_Temp_Dir dir;
    qd_write_file(dir / "noise", "no picture");
    for (const std::string& text :
        {"v4l2:" + dir / "noise", "file:" + dir / "noise", std::string("screen::77")})
        EXPECT_EQ(qd_make_camera(text.c_str())->open(), -1) << text;
}

TEST(Camera, AClipOfAnyShapeIsCroppedAndRunsRoundInRealTime)
{
    QD_Temp_Dir dir;
    // White in the middle, black where it is cut off.
    for (const auto& [name, clip] :
        std::initializer_list<std::pair<const char*, const char*>> {
            {"wide.avi", "640x288,drawbox=w=100:t=fill,drawbox=x=540:w=100:t=fill -c:v mjpeg"},
            {"high.mkv", "16x400,drawbox=h=190:t=fill -c:v ffv1 -pix_fmt yuv444p"},
            {"odd.mkv", "175x143 -c:v ffv1 -pix_fmt bgra"}, {"still.png", "352x288 -frames:v 1"}}) {
        SCOPED_TRACE(name);
        qd_output(std::string("ffmpeg -nostdin -f lavfi -i color=white:duration=0.4:rate=25:size=")
            + clip + " " + dir / name);
        const auto camera = qd_make_camera(("file:" + dir / name).c_str());
        for (int round = 0; round < 2; ++round) {
            ASSERT_EQ(camera->open(), 0);
            const auto begin = std::chrono::steady_clock::now();
            for (int i = 0; i < 15; ++i)
                EXPECT_NEAR(luma(*camera, i * 12, 72), 235, 5) << i;
            EXPECT_GT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(500));
            camera->close();
        }
    }
}

TEST(Camera, TheScreenIsShownWholeBetweenBlackEdges)
{
    const QD_X_Server server("640x240x24");
    qd_run({"display", "-window", "root", "-size", "640x240", "xc:white"});
    const auto camera = qd_make_camera(("screen:" + server.display()).c_str());
    ASSERT_EQ(camera->open(), 0);
    EXPECT_NEAR(luma(*camera, 175, 98), 235, 3);
    EXPECT_EQ(luma(*camera, 88, 30), 16);
    EXPECT_EQ(luma(*camera, 88, 120), 16);
}
