// A knob that is turned to set a number.
#pragma once

#include "platform/vk/component.h"
#include "platform/vk/dial_picture.h"

/// Turned by the mouse (press, drag, wheel) and, when it has the keyboard, by
/// the arrow keys, Page Up and Page Down, Home and End. User-interface thread only.
class VkDial : public VkComponent {
public:
    VkDial(const char* name, Widget parent);
    ~VkDial() override;

    /// The numbers at both ends, 0 and 100 at first; the value is kept between
    /// them. A minimum that is not below the maximum changes nothing.
    void set_range(int minimum, int maximum);

    /// Where the scale begins, clockwise from straight down, and how far it goes
    /// round, in degrees, 45 and 270 at first. A range outside 1..360 changes nothing.
    void set_angles(int start, int range);

    /// Takes the nearest value between the ends.
    void setValue(int value);
    int value() const { return value_; }

    const char* className() override { return "VkDial"; }

private:
    static XtTranslations controls();
    static void exposed(Widget, XtPointer self, XtPointer);
    static void turn(Widget, XEvent*, String* params, Cardinal* count);
    static void press(Widget, XEvent*, String*, Cardinal*);
    static void drag(Widget, XEvent*, String*, Cardinal*);

    /// The value to which a place of the widget points.
    int value_at(int x, int y) const;
    void draw();

    VkDialColours colours_ {};
    GC gc_ = nullptr;
    int minimum_ = 0;
    int maximum_ = 100;
    int start_ = 45;
    int range_ = 270;
    int value_ = 0;
};
