#include "tests/platform/vk/vk_test.h"

#include "platform/vk/dial.h"

#include <memory>

namespace {

constexpr int SIZE = 92; // with one point of highlight around
constexpr int FROM_MIDDLE = 40;

struct Dialled : VkTestWindow {
    Dialled() : VkTestWindow("dialled"), dial_(new VkDial("dial", mainWindowWidget()))
    {
        XtVaSetValues(dial_->baseWidget(), XtNwidth, SIZE, XtNheight, SIZE, nullptr);
        dial_->setRange(0, 270);
        addView(dial_.get());
        show();
        qd_focus(baseWidget());
    }

    bool comes_to(int value) const
    {
        return qd_pump_until([&] { return dial_->value() == value; });
    }

    /// Moves the real pointer to a place of the dial, then does the rest.
    void mouse(int x, int y, std::initializer_list<const char*> rest) const
    {
        std::vector<std::string> command {"xdotool", "mousemove", "--sync", "--window",
            std::to_string(XtWindow(dial_->baseWidget())), std::to_string(x), std::to_string(y)};
        command.insert(command.end(), rest.begin(), rest.end());
        EXPECT_EQ(qd_run(command), 0);
    }

    std::unique_ptr<VkDial> dial_;
};

}

TEST(VkDial, FollowsThePointerButNotOverItsGapAndIsTurnedByKeys)
{
    Dialled window;
    constexpr int MIDDLE = SIZE / 2;
    window.mouse(MIDDLE, MIDDLE - FROM_MIDDLE, {"click", "1"});
    EXPECT_TRUE(window.comes_to(135)) << "straight up is half way";
    qd_pump();
    const auto blue = [&](int x, int y) {
        const QD_Colour at = qd_colour_at(window.dial_->baseWidget(), x, y);
        return at.blue - at.red > 60;
    };
    EXPECT_TRUE(blue(6, MIDDLE) && !blue(SIZE - 7, MIDDLE)) << "the arc is filled half way";
    window.mouse(MIDDLE + FROM_MIDDLE, MIDDLE, {"mousedown", "1"});
    EXPECT_TRUE(window.comes_to(225)) << "right is 270 degrees from below, 45 are before the scale";
    window.mouse(MIDDLE + 5, MIDDLE + FROM_MIDDLE, {});
    EXPECT_TRUE(window.comes_to(270)) << "beyond the scale";
    window.mouse(MIDDLE - FROM_MIDDLE, MIDDLE + 20, {"mouseup", "1"});
    EXPECT_TRUE(window.comes_to(270)) << "no leap to the other end";
    window.mouse(MIDDLE, MIDDLE, {"click", "5"});
    EXPECT_TRUE(window.comes_to(260)) << "the wheel";
    for (const auto& [key, value] :
        {std::pair("Right", 261), {"Down", 260}, {"Left", 259}, {"Up", 260}, {"Prior", 270},
            {"Next", 243}, {"End", 270}, {"Right", 270}, {"Home", 0}, {"Left", 0}, {"Prior", 27}}) {
        ASSERT_EQ(vk_app().server().press(key), 0);
        EXPECT_TRUE(window.comes_to(value)) << key << " " << window.dial_->value();
    }

    window.dial_->setValue(132);
    window.dial_->setRange(5, 5); // nonsense
    window.dial_->setAngles(0, 0);
    EXPECT_EQ(window.dial_->value(), 132);
    window.dial_->setRange(0, 100);
    EXPECT_EQ(window.dial_->value(), 100);
}
