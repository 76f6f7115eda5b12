#include "tests/platform/vk/vk_test.h"

#include "platform/vk/vu_meter.h"

#include <X11/Xutil.h>
#include <memory>

namespace {

struct Metered : VkTestWindow {
    Metered() : VkTestWindow("metered"), meter_(new VkVuMeter("meter", mainWindowWidget()))
    {
        XtVaSetValues(meter_->baseWidget(), XtNwidth, 18, XtNheight, 92, nullptr);
        addView(meter_.get());
        show();
        qd_pump();
    }

    unsigned long pixel(int x, int y) const
    {
        XImage* image = XGetImage(theApplication->display(), XtWindow(meter_->baseWidget()), x, y,
            1, 1, AllPlanes, ZPixmap);
        unsigned long value = XGetPixel(image, 0, 0);
        XDestroyImage(image);
        return value;
    }

    /// From the lowest segment up: 'g', 'a', 'r' lit, '.' dark, '?' anything else.
    std::string look() const
    {
        std::string text;
        for (int i = 0; i < VkVuMeter::SEGMENTS; ++i) {
            const XRectangle place = meter_->segment(i);
            const unsigned long at = pixel(place.x + place.width / 2, place.y + place.height / 2);
            const unsigned long red = at >> 16 & 0xff;
            const unsigned long green = at >> 8 & 0xff;
            const bool dark = std::max(red, green) < 0x60 && at != pixel(0, 0);
            text += dark                      ? '.'
                : green > red && green > 0x80 ? 'g'
                : red > 0xa0                  ? green > 0x80 ? 'a' : 'r'
                                              : '?';
        }
        return text;
    }

    std::unique_ptr<VkVuMeter> meter_;
};

}

TEST(VkVuMeter, LightsWhatTheValueLeavesFromTheBottom)
{
    Metered window;
    EXPECT_EQ(window.look(), "....................") << "nothing before the first value";
    struct {
        int value;
        const char* look;
    } const cases[] = {
        {110, "...................."},
        {0, "ggggggggggggaaaaarrr"},
        {1, "ggggggggggggaaaaarrr"}, // the loudest sample
        {55, "gggggggggg.........."},
        {107, "g..................."},
        {108, "...................."},
        {20, "ggggggggggggaaaa...."},
        {300, "...................."}, // beyond silence
        {-5, "ggggggggggggaaaaarrr"},
    };
    for (const auto& c : cases) {
        window.meter_->setValue(c.value, 110);
        EXPECT_EQ(window.look(), c.look) << c.value;
        EXPECT_EQ(window.meter_->value(), c.value);
    }
    window.meter_->setValue(5, 0); // no scale, no change
    EXPECT_EQ(window.meter_->value(), -5);
}

TEST(VkVuMeter, DrawsOnlyWhatChanges)
{
    Metered window;
    window.meter_->setValue(55, 110);
    // Blot out the lowest segment behind the meter's back: a small step leaves it alone.
    const XRectangle low = window.meter_->segment(0);
    Display* display = theApplication->display();
    XClearArea(
        display, XtWindow(window.meter_->baseWidget()), low.x, low.y, low.width, low.height, False);
    window.meter_->setValue(33, 110);
    EXPECT_EQ(window.look(), "?gggggggggggaa......");
    window.meter_->setValue(77, 110);
    EXPECT_EQ(window.look(), "?ggggg..............");

    XClearArea(display, XtWindow(window.meter_->baseWidget()), 0, 0, 0, 0, True);
    qd_pump();
    EXPECT_EQ(window.look(), "gggggg..............") << "an exposure draws all";
}

TEST(VkVuMeter, SegmentsFillAnyHeightInOrder)
{
    Metered window;
    for (int height : {40, 92, 93, 111, 300}) {
        XtVaSetValues(window.baseWidget(), XtNheight, height, nullptr);
        qd_pump();
        int below = height;
        for (int i = 0; i < VkVuMeter::SEGMENTS; ++i) {
            const XRectangle place = window.meter_->segment(i);
            EXPECT_LE(place.y + place.height, below) << height << ": " << i;
            EXPECT_GE(place.y, 0) << height << ": " << i;
            below = place.y;
        }
        EXPECT_LE(below, 5) << height;
    }
}

TEST(VkVuMeter, OutlivesItsWidget)
{
    Metered window;
    window.meter_->setValue(10, 110);
    XtDestroyWidget(window.meter_->baseWidget());
    window.meter_->setValue(20, 110);
    EXPECT_EQ(window.meter_->value(), 20);
}
