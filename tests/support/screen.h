// What is on the screen, and whether it is a test card.
#pragma once

#include "platform/vl/test_card.h"

#include <cstdint>
#include <cstdlib>
#include <libyuv.h>
#include <string>

/// What takes a shot of the picture at a window's top left, as import's options: red, green and
/// blue of each of its points, a byte each, into the file whose name follows.
#define QD_SHOT " -crop 176x144+0+0 +repage -depth 8 rgb:"

/// Whether a shot is of the test card of that hue: most of its points are, since the clock and the
/// block wander about.
inline bool qd_shows_card(const std::string& shot, int hue)
{
    std::string card(QD_PICTURE_SIZE, '\0');
    QD_Test_Card(hue).paint(0, card.data());
    const auto* yuv = reinterpret_cast<const uint8_t*>(card.data());
    std::string wanted(size_t {QD_LUMA_SIZE} * 3, '\0');
    libyuv::I420ToRAW(yuv, QD_PICTURE_WIDTH, yuv + QD_U_OFFSET, QD_CHROMA_WIDTH, yuv + QD_V_OFFSET,
        QD_CHROMA_WIDTH, reinterpret_cast<uint8_t*>(wanted.data()), QD_PICTURE_WIDTH * 3,
        QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT);
    size_t right = 0;
    for (size_t i = 0; i < shot.size() && i < wanted.size(); ++i)
        right += std::abs(uint8_t(shot[i]) - uint8_t(wanted[i])) < 40;
    return shot.size() == wanted.size() && right > wanted.size() * 3 / 4;
}
