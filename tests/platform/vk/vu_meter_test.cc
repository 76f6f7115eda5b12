#include "tests/platform/vk/vk_test.h"

#include "platform/vk/vu_meter.h"

TEST(VkVuMeter, LightsWhatTheValueLeavesFromTheBottom)
{
    VkTestWindow window;
    VkVuMeter meter("meter", window.main_window_widget());
    window.hold(meter, 18, 92);
    // How many segments shine from the lowest up.
    const auto shining = [&] {
        for (int i = 0; i < VkVuMeter::SEGMENTS; ++i) {
            const XRectangle place = meter.segment(i);
            const QD_Colour at = qd_colour_at(meter.base_widget(), place.x + 1, place.y + 1);
            if (at.red < 0xa0 && at.green < 0x80)
                return i;
        }
        return VkVuMeter::SEGMENTS;
    };
    for (auto [value, wanted] : {std::pair(110, 0), {1, 20}, {107, 1}, {300, 0}, {20, 16}}) {
        meter.setValue(value, 110);
        EXPECT_EQ(shining(), wanted) << value;
    }
    XClearArea(theApplication->display(), XtWindow(meter.base_widget()), 0, 0, 0, 0, True);
    EXPECT_EQ(shining(), 0);
    qd_pump();
    EXPECT_EQ(shining(), 16) << "an exposure draws all";
}
