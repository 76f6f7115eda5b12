// What is on the screen, and whether it is a test card.
#pragma once

#include "platform/vl/test_card.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>

/// Red, green and blue, 0 to 255.
using QD_Mean_Colour = std::array<double, 3>;

/// A picture of a window, by the import program (PPM).
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
        good_ = kind == "P6" && depth == 255 && width_ >= 176 && height_ >= 144
            && pixels_.size() == static_cast<size_t>(width_) * static_cast<size_t>(height_) * 3;
    }

    bool good() const { return good_; }

    /// The mean of the 8 x 8 points from there on.
    QD_Mean_Colour at(int left, int top) const
    {
        QD_Mean_Colour mean {};
        for (int y = top; y < top + 8; ++y)
            for (int x = left; x < left + 8; ++x)
                for (size_t c = 0; c < 3; ++c)
                    mean[c] += static_cast<uint8_t>(
                                   pixels_[static_cast<size_t>(y * width_ + x) * 3 + c])
                        / 64.0;
        return mean;
    }

    /// The pixels of the picture at the top left.
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

/// Whether the picture at the top left is the test card of that hue, its colours as ITU-R BT.601
/// makes them: some of its bars, and its ground.
inline bool qd_shows_card(const QD_Shot& shot, int hue)
{
    std::string card(QD_PICTURE_SIZE, '\0');
    QD_Test_Card(hue).paint(0, card.data());
    const auto* plane = reinterpret_cast<const uint8_t*>(card.data());
    constexpr std::pair<int, int> places[]
        = {{29, 4}, {95, 4}, {117, 4}, {139, 4}, {8, 92}, {160, 132}};
    int right = 0;
    for (auto [left, top] : places) {
        const int chroma = (top + 4) / 2 * 88 + (left + 4) / 2;
        const double luma = 1.164 * (plane[(top + 4) * 176 + left + 4] - 16);
        const double u = plane[QD_U_OFFSET + chroma] - 128;
        const double v = plane[QD_V_OFFSET + chroma] - 128;
        const QD_Mean_Colour wanted {
            luma + 1.596 * v, luma - 0.392 * u - 0.813 * v, luma + 2.017 * u};
        const QD_Mean_Colour got = shot.at(left, top);
        bool near = true;
        for (size_t c = 0; c < 3; ++c)
            near = near && std::abs(got[c] - std::clamp(wanted[c], 0.0, 255.0)) < 40;
        right += near;
    }
    return right >= 5; // the block that wanders about may hide one
}
