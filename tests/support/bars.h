// A picture of eight upright bars, each of one colour.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

struct QD_Bar {
    uint8_t y, u, v;      // as broadcast: luminance 16 to 235, chroma around 128
    int red, green, blue; // what that is, 0 to 255
};

/// From left to right, equally wide.
constexpr std::array<QD_Bar, 8> QD_BARS {{
    {235, 128, 128, 255, 255, 255},
    {210, 16, 146, 255, 255, 0},
    {170, 166, 16, 0, 255, 255},
    {145, 54, 34, 0, 255, 0},
    {106, 202, 222, 255, 0, 255},
    {81, 90, 240, 255, 0, 0},
    {41, 240, 110, 0, 0, 255},
    {16, 128, 128, 0, 0, 0},
}};

/// Planes Y, U and V of a picture of even size, without gaps.
inline std::vector<unsigned char> qd_bars(int width = 176, int height = 144)
{
    std::vector<unsigned char> picture;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            picture.push_back(QD_BARS[static_cast<size_t>(x * 8 / width)].y);
    for (auto chroma : {&QD_Bar::u, &QD_Bar::v})
        for (int y = 0; y < height / 2; ++y)
            for (int x = 0; x < width / 2; ++x)
                picture.push_back(QD_BARS[static_cast<size_t>(x * 16 / width)].*chroma);
    return picture;
}
