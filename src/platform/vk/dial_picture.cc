#include "platform/vk/dial_picture.h"

#include <X11/Xutil.h>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

constexpr double MARGIN = 3;
constexpr double ARC_WIDTH = 4;
constexpr double ARC_TO_KNOB = 4;
constexpr double POINTER_WIDTH = 3;
constexpr double POINTER_FROM = 0.5; // of the knob's radius
constexpr double POINTER_TO = 0.86;
constexpr double RADIANS = std::numbers::pi / 180;

/// How much of a point is covered that lies so far inside an edge.
double cover(double inside) { return std::clamp(inside + 0.5, 0.0, 1.0); }

/// `over` covering a part of `under`; without direct colours the larger part takes the point.
unsigned long mix(const XImage& image, unsigned long under, unsigned long over, double part)
{
    if (image.red_mask == 0)
        return part < 0.5 ? under : over;
    unsigned long mixed = 0;
    for (unsigned long mask : {image.red_mask, image.green_mask, image.blue_mask}) {
        const auto from = static_cast<double>(under & mask);
        const auto to = static_cast<double>(over & mask);
        mixed |= static_cast<unsigned long>(from + (to - from) * part) & mask;
    }
    return mixed;
}

struct Dial {
    const XImage& image;
    const VkDialColours& colours;
    const VkDialAngles& angles;
    double radius;

    double knob_radius() const { return radius - ARC_WIDTH - ARC_TO_KNOB; }

    /// The arc: its part up to the value and that beyond it.
    unsigned long arc(unsigned long pixel, double distance, double angle) const
    {
        const double in_ring = ARC_WIDTH / 2 - std::abs(distance - radius + ARC_WIDTH / 2);
        if (in_ring < -0.5)
            return pixel;
        const double along = distance * RADIANS;
        const double middle = angles.start + angles.range / 2;
        const double turned = std::remainder(angle - middle, 360.0);
        const double from_start = (turned + angles.range / 2) * along;
        const double to_end = (angles.range / 2 - turned) * along;
        const double to_value = (angles.value - middle - turned) * along;
        pixel = mix(image, pixel, colours.groove, cover(std::min({in_ring, from_start, to_end})));
        return mix(image, pixel, colours.filled, cover(std::min({in_ring, from_start, to_value})));
    }

    unsigned long knob(unsigned long pixel, double x, double y, double distance) const
    {
        const double inside = knob_radius() - distance;
        if (inside < -0.5)
            return pixel;
        pixel = mix(image, pixel, colours.rim, cover(inside));
        pixel = mix(image, pixel, colours.knob, cover(inside - 1));
        const double right = -std::sin(angles.value * RADIANS);
        const double down = std::cos(angles.value * RADIANS);
        const double along = std::clamp(
            x * right + y * down, POINTER_FROM * knob_radius(), POINTER_TO * knob_radius());
        const double beside = std::hypot(x - along * right, y - along * down);
        return mix(image, pixel, colours.pointer, cover(POINTER_WIDTH / 2 - beside));
    }

    unsigned long at(double x, double y) const
    {
        const double distance = std::hypot(x, y);
        const double angle = std::atan2(-x, y) / RADIANS;
        return knob(arc(colours.background, distance, angle), x, y, distance);
    }
};

}

void VkPaintDial(XImage& image, const VkDialColours& colours, const VkDialAngles& angles)
{
    const double radius = std::min(image.width, image.height) / 2.0 - MARGIN;
    const Dial dial {image, colours, angles, radius};
    for (int y = 0; y < image.height; ++y)
        for (int x = 0; x < image.width; ++x)
            XPutPixel(
                &image, x, y, dial.at(x + 0.5 - image.width / 2.0, y + 0.5 - image.height / 2.0));
}
