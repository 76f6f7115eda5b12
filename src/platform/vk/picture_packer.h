// Pictures on their way into the pixels of a screen.
#pragma once

#include <X11/Xlib.h>
#include <cstdint>
#include <vector>

/// A planar picture with chroma at half the width and height, rounded up;
/// luminance 16 (black) to 235 (white). Points into other people's memory.
struct VkPlanes {
    const uint8_t* y;
    const uint8_t* u;
    const uint8_t* v;
    int width;
    int height;

    int chroma_width() const { return (width + 1) / 2; }
    int chroma_height() const { return (height + 1) / 2; }
};

/// What a pixel's value means.
struct VkPixelFormat {
    unsigned long red_mask = 0; // without direct colours all three are 0
    unsigned long green_mask = 0;
    unsigned long blue_mask = 0;
    std::vector<unsigned long> ramp; // then: pixels from black to white in even steps, at least 1
};

/// Fills `image`, which is as large as `picture` and has memory of its own. All
/// depths and byte orders are served; 32 and 16 bits a pixel in the usual
/// formats, least significant byte first, are the fast ones.
void VkPackPicture(const VkPlanes& picture, const VkPixelFormat& format, XImage& image);
