#include "tests/ui/ui_test.h"

#include "ui/display_factory.h"
#include "ui/display_window.h"

namespace {

int left_of(Widget widget) { return ui_get<Position>(widget, XmNx); }

}

// The fields' names are crossed: who draws passes the bit rate first, which
// lands in _fps_text, and that one stands on the left. What a user sees is in order.
TEST(DisplayWindow, SaysWhosePictureItIsAndBecomesAnIconWhenClosed)
{
    ui_app();
    DisplayWindowMainWindow window("a\xff*b c\n");
    window.show();
    qd_pump();
    EXPECT_EQ(window.title(), "a\xef\xbf\xbd*b c\xef\xbf\xbd");
    EXPECT_EQ(qd_text(window.base_widget(), "status_text"), window.title());
    window.setStatistics(" 118 kbps", "9.8 fps");
    EXPECT_EQ(qd_text(window.base_widget(), "fps_text"), " 118 kbps");
    EXPECT_EQ(qd_text(window.base_widget(), "kbps_text"), "9.8 fps");
    EXPECT_LT(left_of(qd_find(window.base_widget(), "fps_text")),
        left_of(qd_find(window.base_widget(), "kbps_text")));
    EXPECT_EQ(DisplayWindowMainWindow("").title(), "Video Display");

    qd_close_window(window.base_widget());
    EXPECT_TRUE(window.shown()) << "if only its icon";
}

TEST(DisplayWindows, StandWhereTheResourcesSayInTheOrderOfOpening)
{
    ui_app();
    QD_Display_Windows windows(theApplication->base_widget());
    // The screen is 1024 wide: two of 200 fit beside one another from 620 on.
    std::unique_ptr<QD_Display_View> views[3];
    const std::tuple<int, int, int> places[] = {{0, 620, 30}, {1, 820, 30}, {2, 620, 330},
        {1, 820, 30}}; // the last one where another has left
    for (const auto& [view, left, top] : places) {
        views[view].reset();
        views[view] = windows.make_display("a");
        views[view]->show();
        qd_pump();
        Widget shell = dynamic_cast<DisplayWindowMainWindow&>(*views[view]).base_widget();
        EXPECT_EQ(left_of(shell), left);
        EXPECT_EQ(ui_get<Position>(shell, XmNy), top);
    }
}
