#include "tests/platform/vk/vk_test.h"

#include "platform/vk/picture_display.h"
#include "tests/support/bars.h"

#include <Xm/DrawingA.h>
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

    /// What is wrong with the bars in the middle line of `where`, "" if nothing.
    std::string faults(const XRectangle& where) const
    {
        const bool colours = DefaultVisualOfScreen(XtScreen(area()))->c_class == TrueColor;
        std::string text;
        for (size_t i = 0; i < QD_BARS.size(); ++i) {
            const QD_Bar& bar = QD_BARS[i];
            const int grey = (bar.y - 16) * 255 / 219;
            const QD_Colour got
                = qd_colour_at(area(), where.x + where.width * (2 * static_cast<int>(i) + 1) / 16,
                    where.y + where.height / 2);
            const QD_Colour wanted
                = colours ? QD_Colour {bar.red, bar.green, bar.blue} : QD_Colour {grey, grey, grey};
            if (std::abs(got.red - wanted.red) > 12 || std::abs(got.green - wanted.green) > 12
                || std::abs(got.blue - wanted.blue) > 12)
                text += "bar " + std::to_string(i) + ": " + std::to_string(got.red) + ","
                    + std::to_string(got.green) + "," + std::to_string(got.blue) + "; ";
        }
        return text;
    }
    std::string faults() const { return faults(display_->place()); }

    bool black_at(int x, int y) const
    {
        const QD_Colour got = qd_colour_at(area(), x, y);
        return got.red == 0 && got.green == 0 && got.blue == 0;
    }

    std::unique_ptr<VkPictureDisplay> display_;
};

const std::vector<unsigned char>& bars()
{
    static const std::vector<unsigned char> picture = qd_bars();
    return picture;
}

}

TEST(VkPictureDisplay, ShowsTheLastPictureInItsColours)
{
    Pictured window;
    window.show();
    qd_pump();
    EXPECT_TRUE(window.black_at(88, 72)) << "before the first";
    window.display_->init_display2();
    window.display_->init_display2();
    const std::vector<unsigned char> other(VkPictureDisplay::SIZE, 200);
    window.display_->displayYUV411(other.data());
    window.display_->displayYUV411(bars().data());
    const XRectangle place = window.display_->place();
    EXPECT_EQ(place.width, 176);
    EXPECT_EQ(place.height, 144);
    EXPECT_EQ(window.faults(), "");
}

TEST(VkPictureDisplay, PreparesItselfEvenBeforeItHasAWindow)
{
    Pictured window;
    window.display_->init_display2();
    window.display_->displayYUV411(bars().data());
    window.show();
    EXPECT_TRUE(qd_pump_until([&] { return window.faults().empty(); })) << window.faults();
}

TEST(VkPictureDisplay, GrowsWithTheWidgetAndKeepsItsProportions)
{
    Pictured window;
    window.show();
    qd_pump();
    window.display_->displayYUV411(bars().data());
    struct {
        int width, height;
        int x, y, shown_x, shown_y;
    } const cases[] = {
        {352, 288, 0, 0, 352, 288},
        {528, 432, 0, 0, 528, 432},
        {500, 144, 162, 0, 176, 144}, // wider: black on both sides
        {181, 301, 0, 76, 181, 148},  // higher, and odd
        {176, 144, 0, 0, 176, 144},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.width) + "x" + std::to_string(c.height));
        window.resize(c.width, c.height);
        const XRectangle place = window.display_->place();
        EXPECT_EQ(place.x, c.x);
        EXPECT_EQ(place.y, c.y);
        EXPECT_EQ(place.width, c.shown_x);
        EXPECT_EQ(place.height, c.shown_y);
        EXPECT_EQ(window.faults(), "") << "without a new picture";
        window.display_->displayYUV411(bars().data());
        EXPECT_EQ(window.faults(), "");
        for (int x : {c.x - 1, c.x + c.shown_x})
            EXPECT_TRUE(x < 0 || x >= c.width || window.black_at(x, c.height / 2)) << x;
        for (int y : {c.y - 1, c.y + c.shown_y})
            EXPECT_TRUE(y < 0 || y >= c.height || window.black_at(c.width / 2, y)) << y;
    }
}

// However large a window is asked for, the picture's memory has a bound.
TEST(VkPictureDisplay, IsNeverLargerThanTheScreen)
{
    Pictured window(30000, 30000);
    window.show();
    qd_pump();
    window.display_->displayYUV411(bars().data());
    const XRectangle place = window.display_->place();
    EXPECT_LE(place.width, WidthOfScreen(XtScreen(window.area())));
    EXPECT_LE(place.height, HeightOfScreen(XtScreen(window.area())));
}

TEST(VkPictureDisplay, ComesBackWhenUncovered)
{
    Pictured window;
    window.show();
    qd_pump();
    window.display_->displayYUV411(bars().data());
    for (int round = 0; round < 2; ++round) {
        {
            struct Cover : VkTestWindow {
                Cover() :
                    VkTestWindow("cover"),
                    view_("view", mainWindowWidget(), xmDrawingAreaWidgetClass, 400, 400)
                {
                    addView(&view_);
                    show();
                }
                VkTestView view_;
            } cover;
            ASSERT_TRUE(qd_pump_until([&] { return window.faults() != ""; }));
            if (round == 1) // a picture that comes while covered is the one to come back
                window.display_->displayYUV411(bars().data());
        }
        EXPECT_TRUE(qd_pump_until([&] { return window.faults().empty(); })) << window.faults();
    }
    // A part of it, too.
    XClearArea(theApplication->display(), XtWindow(window.area()), 30, 50, 100, 60, True);
    EXPECT_NE(window.faults(), "");
    qd_pump();
    EXPECT_EQ(window.faults(), "");
}

TEST(VkPictureDisplay, OutlivesItsWidget)
{
    Pictured window;
    window.show();
    qd_pump();
    window.display_->displayYUV411(bars().data());
    XtDestroyWidget(window.area());
    window.display_->displayYUV411(bars().data());
    window.display_->init_display2();
    EXPECT_EQ(window.display_->place().width, 0);
}

// One process has one display, so the other depths are tested by others.
TEST(VkPictureDisplayDepths, HoldOnOtherScreens)
{
    for (const char* screen : {"1024x768x16", "1024x768x8"}) {
        QD_Process::Set_Up other;
        other.environment["QD_TEST_SCREEN"] = screen;
        EXPECT_EQ(qd_run({"/proc/self/exe", "--gtest_filter=VkPictureDisplay.*", "--gtest_brief=1"},
                      other),
            0)
            << screen;
    }
}
