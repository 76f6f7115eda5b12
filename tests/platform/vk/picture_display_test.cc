#include "tests/platform/vk/vk_test.h"

#include "platform/vk/picture_display.h"
#include "tests/support/bars.h"

namespace {

const std::vector<unsigned char> BARS = qd_bars();

struct Pictured : VkTestWindow {
    explicit Pictured(int width = 176, int height = 144) { hold(display, width, height); }

    double brightness(int x, int y) const
    {
        const QD_Colour at = qd_colour_at(display.base_widget(), x, y);
        return 0.299 * at.red + 0.587 * at.green + 0.114 * at.blue;
    }

    /// Whether the picture shows the bars, grey or in their colours.
    bool shows_bars() const
    {
        const XRectangle at = display.place();
        int right = 0;
        for (int i = 0; i < 8; ++i)
            right += std::abs(brightness(at.x + at.width * (2 * i + 1) / 16, at.y + at.height / 2)
                         - (QD_BARS[i][0] - 16) * 255 / 219)
                < 10;
        return right == 8;
    }

    VkPictureDisplay display {"picture", main_window_widget()};
};

}

TEST(VkPictureDisplay, GrowsWithTheWidgetAndKeepsItsProportions)
{
    Pictured window;
    window.display.displayYUV411(BARS.data());
    EXPECT_TRUE(window.shows_bars());
    struct {
        int width, height;
        int x, y, shown_x, shown_y;
    } const cases[] = {
        {500, 144, 162, 0, 176, 144}, // wider: black on both sides
        {183, 301, 0, 76, 183, 149},  // higher, and odd
        {352, 288, 0, 0, 352, 288},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.width);
        XtVaSetValues(window.base_widget(), XtNwidth, c.width, XtNheight, c.height, nullptr);
        qd_pump();
        const XRectangle place = window.display.place();
        EXPECT_EQ((std::array<int, 4> {place.x, place.y, place.width, place.height}),
            (std::array {c.x, c.y, c.shown_x, c.shown_y}));
        EXPECT_TRUE(window.shows_bars()) << "without a new picture";
        EXPECT_LT(window.brightness(c.x == 0 ? c.width - 1 : 0, c.y == 0 ? 140 : 0), 3);
        EXPECT_LT(window.brightness(c.width - 1, c.height - 1), 3);
    }
}

TEST(VkPictureDisplay, ThePartThatIsUncoveredComesBack)
{
    Pictured window;
    window.display.displayYUV411(BARS.data());
    const Window picture = XtWindow(window.display.base_widget());
    XClearArea(theApplication->display(), picture, 30, 50, 100, 60, True);
    EXPECT_FALSE(window.shows_bars());
    qd_pump();
    EXPECT_TRUE(window.shows_bars());
}

TEST(VkPictureDisplay, IsNeverLargerThanTheScreenAndOutlivesItsWidget)
{
    Pictured window(30000, 30000);
    window.display.displayYUV411(BARS.data());
    EXPECT_LE(window.display.place().width, 1024) << "memory has a bound";
    EXPECT_LE(window.display.place().height, 768);
    XtDestroyWidget(window.display.base_widget());
    window.display.displayYUV411(BARS.data());
    EXPECT_EQ(window.display.place().width, 0);
}

// One process has one display, so the other depths are tested by others.
TEST(VkPictureDisplayDepths, HoldOnOtherScreens)
{
    for (const char* screen : {"1024x768x30", "1024x768x16", "1024x768x15", "1024x768x8"})
        EXPECT_EQ(qd_run({std::filesystem::read_symlink("/proc/self/exe"),
                             "--gtest_filter=VkPictureDisplay.*", "--gtest_brief=1"},
                      {.environment = {{"QD_TEST_SCREEN", screen}}}),
            0)
            << screen;
}
