#include "platform/vk/dial.h"

#include "platform/vk/app.h"

#include <X11/Xutil.h>
#include <Xm/DrawnB.h>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string_view>
#include <vector>

namespace {

constexpr const char* CONTROLS = "<Btn1Down>: VkDialPress()\n"
                                 "<Btn1Motion>: VkDialDrag()\n"
                                 "<Btn1Up>:\n"
                                 "<Btn4Down>: VkDialTurn(4%)\n"
                                 "<Btn5Down>: VkDialTurn(-4%)\n"
                                 "<Key>osfLeft: VkDialTurn(-1)\n"
                                 "<Key>osfDown: VkDialTurn(-1)\n"
                                 "<Key>osfRight: VkDialTurn(1)\n"
                                 "<Key>osfUp: VkDialTurn(1)\n"
                                 "<Key>osfPageDown: VkDialTurn(-10%)\n"
                                 "<Key>osfPageUp: VkDialTurn(10%)\n"
                                 "<Key>osfBeginLine: VkDialTurn(-100%)\n"
                                 "<Key>osfEndLine: VkDialTurn(100%)\n";

VkDial* dial_of(Widget widget)
{
    VkDial* dial = nullptr;
    XtVaGetValues(widget, XmNuserData, &dial, nullptr);
    return dial;
}

}

VkDial::VkDial(const char* name, Widget parent) : VkComponent(name)
{
    static XtResource colours[] = {
        VkColourEntry("grooveColor", "Color", offsetof(VkDialColours, groove), "#c3ccd5"),
        VkColourEntry("filledColor", "Color", offsetof(VkDialColours, filled), "#2f6f9f"),
        VkColourEntry("rimColor", "Color", offsetof(VkDialColours, rim), "#8794a0"),
        VkColourEntry("knobColor", "Color", offsetof(VkDialColours, knob), "#fbfcfd"),
        VkColourEntry("pointerColor", "Color", offsetof(VkDialColours, pointer), "#1f2933"),
    };
    set_base_widget(XtVaCreateWidget(name, xmDrawnButtonWidgetClass, parent, XmNshadowThickness, 0,
        XmNpushButtonEnabled, False, XmNnavigationType, XmSTICKY_TAB_GROUP, XmNuserData, this,
        nullptr));
    XtGetApplicationResources(base_widget(), &colours_, colours, XtNumber(colours), nullptr, 0);
    XtOverrideTranslations(base_widget(), controls());
    XtAddCallback(base_widget(), XmNexposeCallback, &VkDial::exposed, this);
    XtAddCallback(base_widget(), XmNresizeCallback, &VkDial::exposed, this);
}

VkDial::~VkDial()
{
    if (gc_ != nullptr)
        XFreeGC(theApplication->display(), gc_);
    if (base_widget() == nullptr)
        return;
    XtRemoveCallback(base_widget(), XmNexposeCallback, &VkDial::exposed, this);
    XtRemoveCallback(base_widget(), XmNresizeCallback, &VkDial::exposed, this);
    XtVaSetValues(base_widget(), XmNuserData, nullptr, nullptr);
}

void VkDial::set_range(int minimum, int maximum)
{
    if (minimum >= maximum)
        return;
    minimum_ = minimum;
    maximum_ = maximum;
    setValue(value_);
}

void VkDial::set_angles(int start, int range)
{
    if (range < 1 || range > 360)
        return;
    start_ = start;
    range_ = range;
    draw();
}

void VkDial::setValue(int value)
{
    value_ = std::clamp(value, minimum_, maximum_);
    draw();
}

int VkDial::value_at(int x, int y) const
{
    Dimension width = 0;
    Dimension height = 0;
    XtVaGetValues(base_widget(), XmNwidth, &width, XmNheight, &height, nullptr);
    const double angle = std::atan2(width / 2.0 - x, y - height / 2.0) * 180 / std::numbers::pi;
    const double from_middle = std::remainder(angle - start_ - range_ / 2.0, 360.0);
    const double part = std::clamp(from_middle / range_ + 0.5, 0.0, 1.0);
    return static_cast<int>(std::lround(minimum_ + part * (maximum_ - minimum_)));
}

void VkDial::draw()
{
    if ((base_widget() == nullptr) || !XtIsRealized(base_widget()))
        return;
    Dimension width = 0;
    Dimension height = 0;
    Dimension border = 0;
    Cardinal depth = 0;
    XtVaGetValues(base_widget(), XmNwidth, &width, XmNheight, &height, XmNhighlightThickness,
        &border, XmNdepth, &depth, XmNbackground, &colours_.background, nullptr);
    const int inner_width = width - 2 * border; // the rest shows where the keyboard is
    const int inner_height = height - 2 * border;
    if (inner_width < 1 || inner_height < 1)
        return;

    Display* display = XtDisplay(base_widget());
    Window window = XtWindow(base_widget());
    if (gc_ == nullptr)
        gc_ = XCreateGC(display, window, 0, nullptr);
    XImage* image = XCreateImage(display, DefaultVisualOfScreen(XtScreen(base_widget())), depth,
        ZPixmap, 0, nullptr, static_cast<unsigned>(inner_width),
        static_cast<unsigned>(inner_height), 32, 0);
    std::vector<char> memory(static_cast<size_t>(image->bytes_per_line * inner_height));
    image->data = memory.data();
    const double part = (value_ - minimum_) / static_cast<double>(maximum_ - minimum_);
    VkPaintDial(*image, colours_,
        {static_cast<double>(start_), static_cast<double>(range_), start_ + part * range_});
    XPutImage(display, window, gc_, image, 0, 0, border, border, static_cast<unsigned>(inner_width),
        static_cast<unsigned>(inner_height));
    image->data = nullptr;
    XDestroyImage(image);
}

XtTranslations VkDial::controls()
{
    // For all dials: what is told to the toolkit stays with it.
    static XtTranslations table = [] {
        static XtActionsRec actions[] = {{const_cast<String>("VkDialTurn"), &VkDial::turn},
            {const_cast<String>("VkDialPress"), &VkDial::press},
            {const_cast<String>("VkDialDrag"), &VkDial::drag}};
        XtAppAddActions(theApplication->app_context(), actions, XtNumber(actions));
        return XtParseTranslationTable(CONTROLS);
    }();
    return table;
}

void VkDial::exposed(Widget, XtPointer self, XtPointer) { static_cast<VkDial*>(self)->draw(); }

/// By so many units or, with "%", by a part of the whole.
void VkDial::turn(Widget widget, XEvent*, String* params, Cardinal* count)
{
    VkDial* dial = dial_of(widget);
    if ((dial == nullptr) || *count != 1)
        return;
    char* unit = nullptr;
    long by = std::strtol(params[0], &unit, 10);
    if (std::string_view(unit) == "%")
        by = by * (dial->maximum_ - dial->minimum_) / 100;
    dial->setValue(static_cast<int>(dial->value_ + by));
}

void VkDial::press(Widget widget, XEvent* event, String*, Cardinal*)
{
    XmProcessTraversal(widget, XmTRAVERSE_CURRENT);
    if (VkDial* dial = dial_of(widget))
        dial->setValue(dial->value_at(event->xbutton.x, event->xbutton.y));
}

// The pointer does not leap over the gap between the ends.
void VkDial::drag(Widget widget, XEvent* event, String*, Cardinal*)
{
    VkDial* dial = dial_of(widget);
    if (dial == nullptr)
        return;
    const int value = dial->value_at(event->xmotion.x, event->xmotion.y);
    if (std::abs(value - dial->value_) <= (dial->maximum_ - dial->minimum_) / 2)
        dial->setValue(value);
}
