// What a dial looks like, point by point.
#pragma once

#include <X11/Xlib.h>

/// Pixels of the screen's colours.
struct VkDialColours {
    unsigned long background;
    unsigned long groove; // the arc beyond the value
    unsigned long filled; // the arc up to the value
    unsigned long rim;    // around the knob
    unsigned long knob;
    unsigned long pointer; // on the knob
};

/// Degrees, clockwise from straight down.
struct VkDialAngles {
    double start;
    double range; // of the whole arc, 1..360
    double value; // where the pointer stands
};

/// Paints the dial as large as fits into the middle of `image`, which has memory
/// of its own. Edges are smooth where the image's masks tell of direct colours.
void VkPaintDial(XImage& image, const VkDialColours& colours, const VkDialAngles& angles);
