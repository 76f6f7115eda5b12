#include <gtest/gtest.h> // before all X headers: their macros would spoil it

#include "platform/vk/picture_packer.h"

#include "tests/support/bars.h"

#include <X11/Xutil.h>
#include <algorithm>
#include <bit>
#include <cmath>

namespace {

/// An image as a server of that kind would want it.
struct Canvas {
    Canvas(int width, int height, int bits_per_pixel, int order)
    {
        image.width = width;
        image.height = height;
        image.format = ZPixmap;
        image.byte_order = image.bitmap_bit_order = order;
        image.bitmap_unit = image.bitmap_pad = 32;
        image.depth = image.bits_per_pixel = bits_per_pixel;
        XInitImage(&image);
        memory.assign(static_cast<size_t>(image.bytes_per_line * height), '\x55');
        image.data = memory.data();
    }
    unsigned long at(int x, int y) { return XGetPixel(&image, x, y); }

    XImage image {};
    std::vector<char> memory;
};

VkPlanes planes(const std::vector<unsigned char>& picture, int width, int height)
{
    const unsigned char* y = picture.data();
    return {y, y + width * height, y + width * height * 5 / 4, width, height};
}

/// Whether the colour under `mask` is `wanted` of 255 but for one step of its
/// own, and the two that the bars' values are rounded by.
bool near(unsigned long pixel, unsigned long mask, int wanted)
{
    const int shift = std::countr_zero(mask);
    const double step = 255 / static_cast<double>(mask >> shift);
    const double got = static_cast<double>((pixel & mask) >> shift) * step;
    return std::abs(got - wanted) <= step * 1.01 + 2;
}

}

TEST(PicturePacker, MakesTheColoursOfEveryKindOfScreen)
{
    struct {
        const char* why;
        int bits_per_pixel;
        int byte_order;
        VkPixelFormat format;
    } const cases[] = {
        {"usual", 32, LSBFirst, {0xff0000, 0xff00, 0xff, {}}},
        {"blue on top", 32, LSBFirst, {0xff, 0xff00, 0xff0000, {}}},
        {"other byte order", 32, MSBFirst, {0xff0000, 0xff00, 0xff, {}}},
        {"ten bits a colour", 32, LSBFirst, {0x3ff00000, 0xffc00, 0x3ff, {}}},
        {"three bytes", 24, LSBFirst, {0xff0000, 0xff00, 0xff, {}}},
        {"65536 colours", 16, LSBFirst, {0xf800, 0x7e0, 0x1f, {}}},
        {"65536 colours, other byte order", 16, MSBFirst, {0xf800, 0x7e0, 0x1f, {}}},
        {"32768 colours", 16, LSBFirst, {0x7c00, 0x3e0, 0x1f, {}}},
        {"256 colours", 8, LSBFirst, {0xe0, 0x1c, 0x3, {}}},
    };
    const std::vector<unsigned char> picture = qd_bars(64, 6);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Canvas canvas(64, 6, c.bits_per_pixel, c.byte_order);
        VkPackPicture(planes(picture, 64, 6), c.format, canvas.image);
        for (int bar = 0; bar < 8; ++bar) {
            const QD_Bar& wanted = QD_BARS[static_cast<size_t>(bar)];
            for (int y = 0; y < 6; ++y) {
                const unsigned long pixel = canvas.at(bar * 8 + 3, y);
                EXPECT_TRUE(near(pixel, c.format.red_mask, wanted.red)
                    && near(pixel, c.format.green_mask, wanted.green)
                    && near(pixel, c.format.blue_mask, wanted.blue))
                    << bar;
            }
        }
    }
}

TEST(PicturePacker, GreysMixToTheRightBrightness)
{
    struct {
        int bits_per_pixel;
        std::vector<unsigned long> ramp;
    } const cases[] = {
        {8, {7, 3, 200, 100, 9}}, // cells come in any order
        {1, {1, 0}},              // black may be 1
        {8, {5}},                 // nothing else was to be had
    };
    for (const auto& c : cases)
        for (int level : {0, 16, 60, 126, 235, 255}) {
            std::vector<unsigned char> picture(16 * 16 * 3 / 2, static_cast<unsigned char>(level));
            Canvas canvas(16, 16, c.bits_per_pixel, LSBFirst);
            VkPackPicture(planes(picture, 16, 16), {0, 0, 0, c.ramp}, canvas.image);
            double sum = 0;
            for (int i = 0; i < 256; ++i)
                sum += static_cast<double>(
                    std::ranges::find(c.ramp, canvas.at(i % 16, i / 16)) - c.ramp.begin());
            const double wanted = std::clamp((level - 16) / 219.0, 0.0, 1.0);
            EXPECT_NEAR(sum / 256, wanted * static_cast<double>(c.ramp.size() - 1), 0.04) << level;
        }
}

TEST(PicturePacker, OddSizesStayInBounds)
{
    for (int bits : {32, 16, 8})
        for (auto [width, height] : {std::pair(1, 1), {1, 5}, {3, 1}, {7, 5}}) {
            const int chroma = (width + 1) / 2 * ((height + 1) / 2);
            // No byte more than it takes, as the address sanitizer sees.
            const std::vector<unsigned char> picture(
                static_cast<size_t>(width * height + 2 * chroma), 128);
            const unsigned char* y = picture.data();
            Canvas canvas(width, height, bits, LSBFirst);
            const unsigned long untouched = canvas.at(width - 1, height - 1);
            VkPackPicture({y, y + width * height, y + width * height + chroma, width, height},
                {0xe0, 0x1c, 0x3, {}}, canvas.image);
            EXPECT_NE(canvas.at(width - 1, height - 1), untouched) << "to the last pixel";
        }
}
