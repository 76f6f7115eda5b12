// Pictures for tests, and what a second opinion makes of coded ones.
#pragma once

#include "platform/vl/picture.h"
#include "tests/support/temp_dir.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <random>
#include <string>

/// A scene that moves with `step`: a gradient, a pattern that pans, some colour.
inline std::string qd_test_picture(int step)
{
    std::string picture(QD_PICTURE_SIZE, '\0');
    for (int i = 0; i < QD_PICTURE_SIZE; ++i) {
        const int x = i % QD_PICTURE_WIDTH;
        const int y = i / QD_PICTURE_WIDTH;
        const double wave = 50 * std::sin((x + 2 * step) * 0.21) * std::cos((y + step) * 0.17);
        picture[static_cast<size_t>(i)] = static_cast<char>(
            std::lround(i < QD_LUMA_SIZE ? 60 + x / 2.0 + wave : 170 - y / 2 - step % 20));
    }
    return picture;
}

/// Decibels between two pictures' luminance; 99 if they are equal.
inline double qd_psnr(const char* a, const char* b)
{
    double sum = 0;
    for (int i = 0; i < QD_LUMA_SIZE; ++i) {
        const int d = static_cast<uint8_t>(a[i]) - static_cast<uint8_t>(b[i]);
        sum += d * d;
    }
    return sum == 0 ? 99 : 10 * std::log10(255.0 * 255.0 * QD_LUMA_SIZE / sum);
}

/// What the ffmpeg program makes of a stream ("h263" or "h261"): all its
/// pictures one behind the other, "" if it complains of anything.
inline std::string qd_ffmpeg_decode(const std::string& format, const std::string& stream)
{
    QD_Temp_Dir dir;
    qd_write_file(dir / "in", stream);
    const std::string command = "ffmpeg -nostdin -v error -xerror -f " + format + " -i "
        + dir / "in" + " -fps_mode passthrough -f rawvideo -pix_fmt yuv420p " + dir / "out"
        + " 2>&1 | grep -v 'first frame is no keyframe' >&2"; // H.261 knows none
    const bool complains = system(command.c_str()) == 0;      // grep found lines
    return complains ? "" : qd_read_file(dir / "out");
}
