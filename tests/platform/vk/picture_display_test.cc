#include "tests/platform/vk/vk_test.h"

#include "platform/vk/picture_display.h"
#include "tests/support/bars.h"

#include <memory>

namespace {

struct Pictured : VkTestWindow {
    explicit Pictured(int width = 176, int height = 144) :
        VkTestWindow("pictured"),
        display_(new VkPictureDisplay("picture", mainWindowWidget()))
    {
        XtVaSetValues(display_->baseWidget(), XtNwidth, width, XtNheight, height, nullptr);
        addView(display_.get());
    }

    Widget area() const { return display_->baseWidget(); }

    void resize(int width, int height)
    {
        XtVaSetValues(baseWidget(), XtNwidth, width, XtNheight, height, nullptr);
        qd_pump_until([&] {
            return vk_get<Dimension>(area(), XtNwidth) == width
                && vk_get<Dimension>(area(), XtNheight) == height;
        });
        qd_pump();
    }

    /// Whether the middle line of the picture shows the bars, grey where there are no colours.
    bool shows_bars() const
    {
        const XRectangle where = display_->place();
        const bool colours = DefaultVisualOfScreen(XtScreen(area()))->c_class == TrueColor;
        bool right = true;
        for (int i = 0; i < 8; ++i) {
            const QD_Bar& bar = QD_BARS[static_cast<size_t>(i)];
            const int grey = (bar.y - 16) * 255 / 219;
            const QD_Colour got = qd_colour_at(
                area(), where.x + where.width * (2 * i + 1) / 16, where.y + where.height / 2);
            right = right && std::abs(got.red - (colours ? bar.red : grey)) <= 12
                && std::abs(got.green - (colours ? bar.green : grey)) <= 12
                && std::abs(got.blue - (colours ? bar.blue : grey)) <= 12;
        }
        return right;
    }

    bool black_at(int x, int y) const
    {
        const QD_Colour got = qd_colour_at(area(), x, y);
        return got.red == 0 && got.green == 0 && got.blue == 0;
    }

    std::unique_ptr<VkPictureDisplay> display_;
};

const std::vector<unsigned char> BARS = qd_bars();

}

TEST(VkPictureDisplay, ShowsTheLastPictureInItsColours)
{
    Pictured window;
    window.show();
    qd_pump();
    EXPECT_TRUE(window.black_at(88, 72)) << "before the first";
    const std::vector<unsigned char> other(VkPictureDisplay::SIZE, 200);
    window.display_->displayYUV411(other.data());
    window.display_->displayYUV411(BARS.data());
    EXPECT_TRUE(window.shows_bars());

    Pictured later; // prepared and drawn even before it has a window
    later.display_->init_display2();
    later.display_->init_display2();
    later.display_->displayYUV411(BARS.data());
    later.show();
    EXPECT_TRUE(qd_pump_until([&] { return later.shows_bars(); }));
}

TEST(VkPictureDisplay, GrowsWithTheWidgetAndKeepsItsProportions)
{
    Pictured window;
    window.show();
    qd_pump();
    window.display_->displayYUV411(BARS.data());
    struct {
        int width, height;
        int x, y, shown_x, shown_y;
    } const cases[] = {
        {352, 288, 0, 0, 352, 288},
        {500, 144, 162, 0, 176, 144}, // wider: black on both sides
        {181, 301, 0, 76, 181, 148},  // higher, and odd
        {176, 144, 0, 0, 176, 144},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
        window.resize(c.width, c.height);
        const XRectangle place = window.display_->place();
        EXPECT_EQ((std::array<int, 4> {place.x, place.y, place.width, place.height}),
            (std::array {c.x, c.y, c.shown_x, c.shown_y}));
        EXPECT_TRUE(window.shows_bars()) << "without a new picture";
        window.display_->displayYUV411(BARS.data());
        EXPECT_TRUE(window.shows_bars());
        if (c.x > 0) {
            EXPECT_TRUE(window.black_at(c.x - 1, 9) && window.black_at(c.x + c.shown_x, 9));
        }
        if (c.y > 0) {
            EXPECT_TRUE(window.black_at(9, c.y - 1) && window.black_at(9, c.y + c.shown_y));
        }
    }
}

TEST(VkPictureDisplay, ComesBackWhenUncovered)
{
    Pictured window;
    window.show();
    qd_pump();
    window.display_->displayYUV411(BARS.data());
    for (int round = 0; round < 2; ++round) {
        {
            Pictured cover(400, 400);
            cover.show();
            ASSERT_TRUE(qd_pump_until([&] { return !window.shows_bars(); }));
            if (round == 1) // a picture that comes while covered is the one to come back
                window.display_->displayYUV411(BARS.data());
        }
        EXPECT_TRUE(qd_pump_until([&] { return window.shows_bars(); }));
    }
    // A part of it, too.
    XClearArea(theApplication->display(), XtWindow(window.area()), 30, 50, 100, 60, True);
    EXPECT_FALSE(window.shows_bars());
    qd_pump();
    EXPECT_TRUE(window.shows_bars());
}

TEST(VkPictureDisplay, IsNeverLargerThanTheScreenAndOutlivesItsWidget)
{
    Pictured window(30000, 30000);
    window.show();
    qd_pump();
    window.display_->displayYUV411(BARS.data());
    const XRectangle place = window.display_->place();
    EXPECT_LE(place.width, WidthOfScreen(XtScreen(window.area()))) << "memory has a bound";
    EXPECT_LE(place.height, HeightOfScreen(XtScreen(window.area())));
    XtDestroyWidget(window.area());
    window.display_->displayYUV411(BARS.data());
    window.display_->init_display2();
    EXPECT_EQ(window.display_->place().width, 0);
}

// One process has one display, so the other depths are tested by others.
TEST(VkPictureDisplayDepths, HoldOnOtherScreens)
{
    for (const char* screen : {"1024x768x16", "1024x768x8"}) {
        EXPECT_EQ(qd_run({"/proc/self/exe", "--gtest_filter=VkPictureDisplay.*", "--gtest_brief=1"},
                      {.environment = {{"QD_TEST_SCREEN", screen}}}),
            0)
            << screen;
    }
}
