// A picture of eight upright bars, each of one colour.
#pragma once

#include <cstdint>
#include <vector>

/// Luminance and chroma, from left to right: white, yellow, cyan, green, magenta, red, blue, black.
constexpr uint8_t QD_BARS[8][3] = {{235, 128, 128}, {210, 16, 146}, {170, 166, 16}, {145, 54, 34},
    {106, 202, 222}, {81, 90, 240}, {41, 240, 110}, {16, 128, 128}};

/// Planes Y, U and V of a picture of 176 x 144, without gaps.
inline std::vector<unsigned char> qd_bars()
{
    std::vector<unsigned char> picture;
    for (int plane = 0; plane < 3; ++plane) {
        const int width = plane == 0 ? 176 : 88;
        for (int i = 0; i < width * width * 144 / 176; ++i)
            picture.push_back(QD_BARS[i % width * 8 / width][plane]);
    }
    return picture;
}
