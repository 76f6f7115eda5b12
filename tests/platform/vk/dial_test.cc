#include "tests/platform/vk/vk_test.h"

#include "platform/vk/dial.h"

TEST(VkDial, FollowsThePointerButNotOverItsGapAndIsTurnedByKeys)
{
    VkTestWindow window;
    VkDial dial("dial", window.main_window_widget());
    dial.set_range(0, 270);
    window.hold(dial, 92, 92);
    qd_focus(window.base_widget());
    const std::string id = std::to_string(XtWindow(dial.base_widget()));
    const auto comes_to = [&](int value, const std::string& by) {
        qd_output("xdotool " + by);
        EXPECT_TRUE(qd_pump_until([&] { return dial.value() == value; })) << by;
    };
    const auto pointer = [&](int value, const std::string& at) {
        comes_to(value, "mousemove --sync --window " + id + " " + at);
    };
    pointer(135, "46 6 click 1");      // straight up is half way
    pointer(225, "86 46 mousedown 1"); // 45 degrees are before the scale
    pointer(270, "51 86");             // beyond the scale
    pointer(270, "6 66 mouseup 1");    // no leap to the other end
    pointer(260, "46 46 click 5");     // the wheel
    for (const auto& [key, value] : {std::pair("Right", 261), {"Left", 260}, {"Prior", 270},
             {"Next", 243}, {"End", 270}, {"Right", 270}, {"Home", 0}, {"Left", 0}, {"Up", 1}})
        comes_to(value, std::string("key ") + key);
}
