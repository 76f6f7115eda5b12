#include "tests/platform/vk/vk_test.h"

#include "platform/vk/vu_meter.h"

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

    /// From the lowest segment up: 'g', 'a', 'r' lit, '.' dark, '?' the ground.
    std::string look() const
    {
        const QD_Colour ground = qd_colour_at(meter_->baseWidget(), 0, 0);
        std::string text;
        for (int i = 0; i < VkVuMeter::SEGMENTS; ++i) {
            const XRectangle place = meter_->segment(i);
            const QD_Colour at = qd_colour_at(
                meter_->baseWidget(), place.x + place.width / 2, place.y + place.height / 2);
            const bool red = at.red > 0xa0;
            const bool green = at.green > 0x80;
            text += at.red == ground.red ? '?' : red && green ? 'a' : red ? 'r' : green ? 'g' : '.';
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
    }
    window.meter_->setValue(55, 0); // no scale, no change
    EXPECT_EQ(window.meter_->value(), -5);

    XClearArea(theApplication->display(), XtWindow(window.meter_->baseWidget()), 0, 0, 0, 0, True);
    EXPECT_EQ(window.look(), "????????????????????");
    qd_pump();
    EXPECT_EQ(window.look(), "ggggggggggggaaaaarrr") << "an exposure draws all";
}
