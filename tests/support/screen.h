// What is on the screen, and whether it is a test card.
#pragma once

#include "platform/vl/test_card.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

struct QD_Colour {
    double red, green, blue;
    double distance(const QD_Colour& other) const
    {
        return std::max({std::abs(red - other.red), std::abs(green - other.green),
            std::abs(blue - other.blue)});
    }
};

// A picture of a window, by the import program.
class QD_Shot {
public:
    explicit QD_Shot(const std::string& file)
    {
        std::ifstream in(file, std::ios::binary);
        std::string kind;
        int depth = 0;
        in >> kind >> width_ >> height_ >> depth;
        in.get();
        pixels_.assign(std::istreambuf_iterator<char>(in), {});
        good_ = kind == "P6" && depth == 255
            && pixels_.size() == static_cast<size_t>(width_) * static_cast<size_t>(height_) * 3;
    }

    bool good() const { return good_ && width_ >= 176 && height_ >= 144; }

    // The mean of the 8 x 8 points from there on.
    QD_Colour at(int left, int top) const
    {
        QD_Colour mean {};
        for (int y = top; y < top + 8; ++y)
            for (int x = left; x < left + 8; ++x) {
                const auto* point = reinterpret_cast<const uint8_t*>(
                    &pixels_[static_cast<size_t>(y * width_ + x) * 3]);
                mean.red += point[0] / 64.0;
                mean.green += point[1] / 64.0;
                mean.blue += point[2] / 64.0;
            }
        return mean;
    }

    std::string picture() const
    {
        std::string rows;
        for (int y = 0; y < 144; ++y)
            rows += pixels_.substr(static_cast<size_t>(y * width_) * 3, 176 * 3);
        return rows;
    }

private:
    int width_ = 0;
    int height_ = 0;
    std::string pixels_;
    bool good_ = false;
};

// What the test card of a hue has at a place, as ITU-R BT.601 makes colours of it.
inline QD_Colour qd_card_at(int hue, int left, int top)
{
    std::string card(QD_PICTURE_SIZE, '\0');
    QD_Test_Card(hue).paint(0, card.data());
    const auto* plane = reinterpret_cast<const uint8_t*>(card.data());
    const int x = left + 4;
    const int y = top + 4;
    const double luma = 1.164 * (plane[y * 176 + x] - 16);
    const double u = plane[QD_U_OFFSET + y / 2 * 88 + x / 2] - 128;
    const double v = plane[QD_V_OFFSET + y / 2 * 88 + x / 2] - 128;
    const auto cut = [](double value) { return std::clamp(value, 0.0, 255.0); };
    return {cut(luma + 1.596 * v), cut(luma - 0.392 * u - 0.813 * v), cut(luma + 2.017 * u)};
}

/// Whether the picture at the top left is the test card of that hue: some of its bars, and its
/// ground.
inline bool qd_shows_card(const QD_Shot& shot, int hue)
{
    constexpr std::pair<int, int> places[]
        = {{29, 4}, {95, 4}, {117, 4}, {139, 4}, {8, 92}, {160, 132}};
    int right = 0;
    for (auto [x, y] : places)
        right += shot.at(x, y).distance(qd_card_at(hue, x, y)) < 40;
    return right >= 5; // the block that wanders about may hide one
}
