// What is on the screen, and whether it is a test card.
#pragma once

#include "platform/vl/test_card.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>

/// What takes a shot of the picture at a window's top left, as import's options: red, green and
/// blue of each of its points, a byte each, into the file whose name follows.
#define QD_SHOT " -crop 176x144+0+0 +repage -depth 8 rgb:"

/// Whether a shot is of the test card of that hue, its colours as ITU-R BT.601 makes them: some of
/// its bars, and its ground, 8 x 8 points each.
inline bool qd_shows_card(const std::string& shot, int hue)
{
    if (shot.size() != size_t {QD_LUMA_SIZE} * 3)
        return false;
    std::string card(QD_PICTURE_SIZE, '\0');
    QD_Test_Card(hue).paint(0, card.data());
    int right = 0;
    for (auto [column, row] : {std::pair(3, 1), {7, 1}, {12, 1}, {17, 1}, {1, 11}, {20, 17}}) {
        const auto painted = [&](int plane, int side) { // in the middle of those points
            const int at = (row * side + side / 2) * 22 * side + column * side + side / 2;
            return static_cast<uint8_t>(card[static_cast<size_t>(plane + at)]);
        };
        const double luma = 1.164 * (painted(0, 8) - 16);
        const double u = painted(QD_U_OFFSET, 4) - 128;
        const double v = painted(QD_V_OFFSET, 4) - 128;
        const double wanted[] = {luma + 1.596 * v, luma - 0.392 * u - 0.813 * v, luma + 2.017 * u};
        bool near = true;
        for (int c = 0; c < 3; ++c) {
            double mean = 0;
            for (int i = 0; i < 64; ++i) {
                const int at = (row * 8 + i / 8) * QD_PICTURE_WIDTH + column * 8 + i % 8;
                mean += static_cast<uint8_t>(shot[static_cast<size_t>(at * 3 + c)]) / 64.0;
            }
            near = near && std::abs(mean - std::clamp(wanted[c], 0.0, 255.0)) < 40;
        }
        right += near;
    }
    return right >= 5; // the block that wanders about may hide one: it is too small for two
}
