#include "platform/vk/vu_meter.h"

#include "platform/vk/app.h"

#include <Xm/DrawingA.h>
#include <Xm/Xm.h>
#include <algorithm>
#include <utility>

namespace {

constexpr int MARGIN = 3;
constexpr int GAP = 2;

}

VkVuMeter::VkVuMeter(const char* name, Widget parent) : VkComponent(name)
{
    static XtResource colours[] = {
        VkColourEntry("lowDarkColor", "DarkColor", 0, "#24433a"),
        VkColourEntry("lowColor", "LitColor", 1 * sizeof(Pixel), "#3fb573"),
        VkColourEntry("middleDarkColor", "DarkColor", 2 * sizeof(Pixel), "#453d26"),
        VkColourEntry("middleColor", "LitColor", 3 * sizeof(Pixel), "#e0a52e"),
        VkColourEntry("highDarkColor", "DarkColor", 4 * sizeof(Pixel), "#472a2c"),
        VkColourEntry("highColor", "LitColor", 5 * sizeof(Pixel), "#e0483f"),
    };
    static const VkResource defaults[] = {{".background", "#1b242c"}};
    set_default_resources(parent, defaults);
    set_base_widget(XtVaCreateWidget(name, xmDrawingAreaWidgetClass, parent, XmNtraversalOn, False,
        XmNmarginWidth, 0, XmNmarginHeight, 0, nullptr));
    XtGetApplicationResources(
        base_widget(), shades_.data(), colours, XtNumber(colours), nullptr, 0);
    XtAddCallback(base_widget(), XmNexposeCallback, &VkVuMeter::exposed, this);
    XtAddCallback(base_widget(), XmNresizeCallback, &VkVuMeter::exposed, this);
}

VkVuMeter::~VkVuMeter()
{
    drop_gc();
    if (base_widget() == nullptr)
        return;
    XtRemoveCallback(base_widget(), XmNexposeCallback, &VkVuMeter::exposed, this);
    XtRemoveCallback(base_widget(), XmNresizeCallback, &VkVuMeter::exposed, this);
}

void VkVuMeter::setValue(int value, int max)
{
    if (max <= 0)
        return;
    value_ = value;
    const long long loud = max - std::clamp(value, 0, max);
    const int now = static_cast<int>((loud * SEGMENTS + max / 2) / max);
    const int before = std::exchange(lit_, now);
    draw(std::min(before, now), std::max(before, now));
}

XRectangle VkVuMeter::segment(int index) const
{
    Dimension width = 0;
    Dimension height = 0;
    XtVaGetValues(base_widget(), XmNwidth, &width, XmNheight, &height, nullptr);
    // Edges are computed from the whole height, so that the rounding spreads over all segments.
    const int room = std::max(height - 2 * MARGIN + GAP, 0);
    const int bottom = height - MARGIN + GAP - room * index / SEGMENTS;
    const int top = height - MARGIN + GAP - room * (index + 1) / SEGMENTS;
    return {MARGIN, static_cast<short>(top),
        static_cast<unsigned short>(std::max(width - 2 * MARGIN, 0)),
        static_cast<unsigned short>(std::max(bottom - GAP - top, 0))};
}

void VkVuMeter::draw(int from, int to)
{
    if (from >= to || (base_widget() == nullptr) || !XtIsRealized(base_widget()))
        return;
    Display* display = XtDisplay(base_widget());
    Window window = XtWindow(base_widget());
    if (gc_ == nullptr)
        gc_ = XCreateGC(display, window, 0, nullptr);
    for (int i = from; i < to; ++i) {
        const Shade& shade = shades_[i >= RED_FROM ? 2 : i >= AMBER_FROM ? 1 : 0];
        const XRectangle place = segment(i);
        XSetForeground(display, gc_, i < lit_ ? shade.lit : shade.dark);
        XFillRectangles(display, window, gc_, const_cast<XRectangle*>(&place), 1);
    }
}

void VkVuMeter::exposed(Widget widget, XtPointer self, XtPointer call)
{
    const auto* data = static_cast<XmDrawingAreaCallbackStruct*>(call);
    if (!XtIsRealized(widget))
        return;
    if (data->reason == XmCR_RESIZE) // the segments have moved
        XClearWindow(XtDisplay(widget), XtWindow(widget));
    else if ((data->event != nullptr) && data->event->xexpose.count > 0)
        return; // the last of a row of exposures draws all
    static_cast<VkVuMeter*>(self)->draw(0, SEGMENTS);
}

void VkVuMeter::drop_gc()
{
    // All windows share the application's display, which outlives the widget.
    if (gc_ != nullptr)
        XFreeGC(theApplication->display(), gc_);
    gc_ = nullptr;
}
