// A level meter: a column of segments, green below, then amber, red on top.
#pragma once

#include "platform/vk/component.h"

#include <array>

/// User-interface thread only.
class VkVuMeter : public VkComponent {
public:
    static constexpr int SEGMENTS = 20;
    static constexpr int AMBER_FROM = 12; // counted from the bottom
    static constexpr int RED_FROM = 17;

    VkVuMeter(const char* name, Widget parent);
    ~VkVuMeter() override;

    /// Shows a value that counts from the top: `value` of `max` units are dark,
    /// so `max` (and above) is silence and 0 (and below) full scale. Only the
    /// segments that change are drawn. Before the first value nothing is lit.
    void setValue(int value, int max);

    /// The last value given; -1 before the first.
    int value() const { return value_; }

    /// How many segments are lit, from the bottom.
    int lit() const { return lit_; }

    /// The place of segment `index`, 0 the lowest, in the base widget.
    XRectangle segment(int index) const;

    const char* className() override { return "VkVuMeter"; }

private:
    struct Shade {
        Pixel dark;
        Pixel lit;
    };
    static void exposed(Widget, XtPointer self, XtPointer);
    void draw(int from, int to);
    void drop_gc();

    std::array<Shade, 3> shades_ {}; // green, amber, red
    GC gc_ = nullptr;
    int value_ = -1;
    int lit_ = 0;
};
