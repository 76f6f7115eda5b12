#include "platform/vk/picture_packer.h"

#include <X11/Xutil.h>
#include <algorithm>
#include <array>
#include <bit>
#include <libyuv.h>

namespace {

/// Small steps of brightness would show as contours in 5 and 6 bits: mixed instead.
int to_dithered_565(const uint8_t* y, int y_stride, const uint8_t* u, int u_stride,
    const uint8_t* v, int v_stride, uint8_t* out, int out_stride, int width, int height)
{
    return libyuv::I420ToRGB565Dither(
        y, y_stride, u, u_stride, v, v_stride, out, out_stride, nullptr, width, height);
}

constexpr struct {
    int bits_per_pixel;
    unsigned long red_mask;
    unsigned long green_mask;
    unsigned long blue_mask;
    decltype(&libyuv::I420ToARGB) convert;
} FAST_FORMATS[] = {
    {32, 0xff0000, 0xff00, 0xff, libyuv::I420ToARGB},
    {32, 0xff, 0xff00, 0xff0000, libyuv::I420ToABGR},
    {24, 0xff0000, 0xff00, 0xff, libyuv::I420ToRGB24},
    {16, 0xf800, 0x7e0, 0x1f, to_dithered_565},
};

bool pack_fast(const VkPlanes& picture, const VkPixelFormat& format, XImage& image)
{
    for (const auto& fast : FAST_FORMATS) {
        if (image.byte_order != LSBFirst || image.bits_per_pixel != fast.bits_per_pixel
            || format.red_mask != fast.red_mask || format.green_mask != fast.green_mask
            || format.blue_mask != fast.blue_mask)
            continue;
        fast.convert(picture.y, picture.width, picture.u, picture.chroma_width(), picture.v,
            picture.chroma_width(), reinterpret_cast<uint8_t*>(image.data), image.bytes_per_line,
            picture.width, picture.height);
        return true;
    }
    return false;
}

/// The part of a pixel that each of the 256 values of one colour makes.
std::array<unsigned long, 256> shares(unsigned long mask)
{
    std::array<unsigned long, 256> table {};
    if (mask == 0)
        return table;
    const int shift = std::countr_zero(mask);
    const unsigned long most = mask >> shift;
    for (size_t value = 0; value < table.size(); ++value)
        table[value] = (value * most + 127) / 255 << shift;
    return table;
}

void pack_masks(const VkPlanes& picture, const VkPixelFormat& format, XImage& image)
{
    const auto red = shares(format.red_mask);
    const auto green = shares(format.green_mask);
    const auto blue = shares(format.blue_mask);
    std::vector<uint8_t> row(static_cast<size_t>(picture.width) * 4);
    for (int y = 0; y < picture.height; ++y) {
        const ptrdiff_t chroma = ptrdiff_t {y / 2} * picture.chroma_width();
        libyuv::I420ToARGB(picture.y + ptrdiff_t {y} * picture.width, picture.width,
            picture.u + chroma, picture.chroma_width(), picture.v + chroma, picture.chroma_width(),
            row.data(), picture.width * 4, picture.width, 1);
        const uint8_t* at = row.data();
        for (int x = 0; x < picture.width; ++x, at += 4)
            XPutPixel(&image, x, y, red[at[2]] | green[at[1]] | blue[at[0]]);
    }
}

/// Greys between two steps of the ramp are mixed from both by an ordered pattern.
void pack_ramp(const VkPlanes& picture, const std::vector<unsigned long>& ramp, XImage& image)
{
    constexpr int PATTERN[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    constexpr int BLACK = 16;
    constexpr int RANGE = 219;
    const int steps = static_cast<int>(ramp.size()) - 1;
    const uint8_t* luminance = picture.y;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            const int level = std::clamp(*luminance++ - BLACK, 0, RANGE) * steps;
            const int rest = level % RANGE * 32;
            const bool up = rest > (PATTERN[y % 4][x % 4] * 2 + 1) * RANGE;
            XPutPixel(&image, x, y, ramp[static_cast<size_t>(level / RANGE + up)]);
        }
    }
}

}

void VkPackPicture(const VkPlanes& picture, const VkPixelFormat& format, XImage& image)
{
    if (pack_fast(picture, format, image))
        return;
    if (format.ramp.empty())
        pack_masks(picture, format, image);
    else
        pack_ramp(picture, format.ramp, image);
}
