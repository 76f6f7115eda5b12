#include "platform/vl/camera.h"

#include "tests/support/pictures.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

// Makes a clip of a source of ffmpeg's own.
void make_clip(const std::string& path, const std::string& source, const std::string& options)
{
    const std::string command = "ffmpeg -nostdin -v error -f lavfi -i " + source + " " + options
        + " " + path + " >/dev/null 2>&1";
    ASSERT_EQ(system(command.c_str()), 0) << command;
}

// The next picture, "" if the camera fails.
std::string read_picture(QD_Camera& camera)
{
    std::string picture(QD_PICTURE_SIZE, '\0');
    for (int i = 0; i < 100; ++i) {
        const int result = camera.read(picture.data());
        if (result != 0)
            return result == 1 ? picture : "";
    }
    return "";
}

// Of one point, -1 if there is no picture.
int luma(const std::string& picture, int x, int y)
{
    return picture.empty()
        ? -1
        : static_cast<uint8_t>(picture[static_cast<size_t>(y * QD_PICTURE_WIDTH + x)]);
}

}

TEST(Camera, AWrongValueIsOneLineAndTheDefault)
{
    QD_Temp_Dir dir;
    qd_write_file(dir.file("clip"), "x");
    ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0600), 0);
    struct {
        std::string text;
        std::string line; // nothing is printed if empty
    } const cases[] = {
        {"v4l2:/dev/video0", ""},
        {"testcard:-30", ""},
        {"screen::7", ""},
        {"file:" + dir.file("clip"), ""},
        {"file:" + dir.file("none"), "QD_CAMERA=file:" + dir.file("none") + ": there is no"},
        {"file:" + dir.file("pipe"), "QD_CAMERA=file:" + dir.file("pipe") + ": there is no"},
        {"testcard:red", "QD_CAMERA=testcard:red: a hue"},
        {"testcard:1e3", "QD_CAMERA=testcard:1e3: a hue"},
        {"webcam",
            "QD_CAMERA=webcam: not one of v4l2[:DEVICE] file:CLIP screen[:DISPLAY] "
            "testcard[:HUE]\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        testing::internal::CaptureStderr();
        EXPECT_TRUE(qd_make_camera(c.text.c_str()));
        const std::string printed = testing::internal::GetCapturedStderr();
        EXPECT_EQ(printed.substr(0, c.line.size()), c.line);
        EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), c.line.empty() ? 0 : 1);
    }
    EXPECT_TRUE(qd_make_camera(nullptr));
}

TEST(Camera, WhatCannotBeOpenedRefuses)
{
    QD_Temp_Dir dir;
    qd_write_file(dir.file("noise"), qd_noise_picture(1));
    qd_write_file(dir.file("list.m3u8"), "#EXTM3U\n#EXTINF:1,\nhttp://127.0.0.1:9/x\n");
    for (const std::string& text :
        {"v4l2:" + dir.file("none"), "v4l2:" + dir.file("noise"), "file:" + dir.file("noise"),
            "file:" + dir.file("list.m3u8"), std::string("screen::77")}) {
        SCOPED_TRACE(text);
        const auto camera = qd_make_camera(text.c_str());
        EXPECT_EQ(camera->open(), -1);
        EXPECT_EQ(camera->open(), -1) << "and may be tried again";
        camera->close();
    }
}

TEST(Camera, AClipIsCroppedAndRunsRoundInRealTime)
{
    QD_Temp_Dir dir;
    // Wider than our shape: a dark picture with bright edges that are cut off.
    make_clip(dir.file("clip.avi"),
        "color=gray:size=640x288:rate=25:duration=0.4,drawbox=x=0:w=100:color=white:t=fill,"
        "drawbox=x=540:w=100:color=white:t=fill",
        "-c:v mjpeg -q:v 2");
    const auto camera = qd_make_camera(("file:" + dir.file("clip.avi")).c_str());
    ASSERT_EQ(camera->open(), 0);
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 25; ++i) {
        const std::string picture = read_picture(*camera);
        for (int x : {1, 60, 175})
            EXPECT_NEAR(luma(picture, x, 70), 126, 8) << x;
    }
    const auto took = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(took, std::chrono::milliseconds(900)) << "25 pictures at 25 a second";
    EXPECT_LT(took, std::chrono::milliseconds(3000));
    camera->close();
    ASSERT_EQ(camera->open(), 0) << "again";
    EXPECT_NE(read_picture(*camera), "");
    camera->close();
}

TEST(Camera, ClipsOfAnyShapeAndFormatFit)
{
    QD_Temp_Dir dir;
    struct {
        const char* name;
        const char* size;
        const char* options;
    } const cases[] = {
        {"high.mkv", "16x400", "-c:v ffv1 -pix_fmt yuv444p"},
        {"wide.mkv", "402x18", "-c:v ffv1 -pix_fmt gray"},
        {"odd.mkv", "175x143", "-c:v ffv1 -pix_fmt bgra"},
        {"still.png", "352x288", "-frames:v 1"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        make_clip(dir.file(c.name), std::string("color=white:rate=50:duration=0.1:size=") + c.size,
            c.options);
        const auto camera = qd_make_camera(("file:" + dir.file(c.name)).c_str());
        ASSERT_EQ(camera->open(), 0);
        for (int i = 0; i < 8; ++i)
            EXPECT_NEAR(luma(read_picture(*camera), 88, 72), 235, 3);
    }
}

TEST(Camera, TheScreenIsShownWholeBetweenBlackEdges)
{
    const QD_X_Server server("640x240x24");
    ASSERT_NE(server.display(), "");
    const std::string paint = "display -display " + server.display()
        + " -window root -size 640x240 xc:white 2>/dev/null || true"; // paints, and fails at
                                                                      // parting
    ASSERT_EQ(system(paint.c_str()), 0);
    const auto camera = qd_make_camera(("screen:" + server.display()).c_str());
    ASSERT_EQ(camera->open(), 0);
    const std::string picture = read_picture(*camera);
    EXPECT_NEAR(luma(picture, 40, 72), 235, 3);
    EXPECT_NEAR(luma(picture, 1, 45), 235, 3) << "full width";
    EXPECT_EQ(luma(picture, 88, 30), 16);
    EXPECT_EQ(luma(picture, 88, 120), 16);
    camera->close();
}
