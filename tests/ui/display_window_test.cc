#include "tests/ui/ui_test.h"

#include "tests/support/bars.h"
#include "ui/display_factory.h"
#include "ui/display_window.h"

#include <X11/Xutil.h>
#include <memory>

namespace {

struct Video : DisplayWindowMainWindow {
    explicit Video(const char* name) : DisplayWindowMainWindow((static_cast<void>(ui_app()), name))
    {
        show();
        qd_pump();
    }
    std::string text(const char* field) { return ui_text(baseWidget(), field); }
    Widget picture() { return qd_find(baseWidget(), "picture"); }
};

int left_of(Widget widget) { return ui_get<Position>(widget, XmNx); }
int top_of(Widget widget) { return ui_get<Position>(widget, XmNy); }

bool is_white(const QD_Colour& c) { return c.red > 240 && c.green > 240 && c.blue > 240; }

}

TEST(DisplayWindow, SaysWhosePictureItIs)
{
    struct {
        const char* name;
        const char* shown;
    } const cases[] = {{"J\xc3\xb6rg M.@192.168.4.17", "J\xc3\xb6rg M.@192.168.4.17"},
        {"a\xff*b c\n", "a\xef\xbf\xbd*b c\xef\xbf\xbd"}, {"", "Video Display"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shown);
        Video window(c.name);
        EXPECT_STREQ(XtName(window.baseWidget()), *c.name ? c.name : "displayWindow");
        EXPECT_EQ(window.title(), c.shown);
        EXPECT_EQ(window.text("status_text"), *c.name ? c.shown : "");
    }
}

// The fields' names are crossed: who draws passes the bit rate first, which
// lands in _fps_text, and that one stands on the left. What a user sees is in order.
TEST(DisplayWindow, TheBitRateStandsLeftInTheFieldNamedForTheFrameRate)
{
    Video window("anna@orion");
    window.setStatistics(" 118 kbps", "9.8 fps");
    EXPECT_EQ(window.text("fps_text"), " 118 kbps");
    EXPECT_EQ(window.text("kbps_text"), "9.8 fps");
    EXPECT_LT(left_of(qd_find(window.baseWidget(), "fps_text")),
        left_of(qd_find(window.baseWidget(), "kbps_text")));
    window.setStatus("frozen");
    EXPECT_EQ(window.text("status_text"), "frozen");
}

TEST(DisplayWindow, AtItsSizeThePictureHasItsOwnAndGrowsAlone)
{
    Video window("someone.with.a.long.name@some.host.far.away.example.org");
    window.setStatistics("1500 kbps", "30.0 fps");
    EXPECT_EQ(ui_size(qd_find(window.baseWidget(), "dpy_form")), "176x215");
    EXPECT_EQ(ui_size(window.picture()), "176x144");
    EXPECT_EQ(top_of(window.picture()), 0);
    EXPECT_EQ(ui_misfits(window.baseWidget()), "");

    XtVaSetValues(window.baseWidget(), XmNwidth, 528, XmNheight, 503, nullptr);
    qd_pump();
    EXPECT_EQ(ui_size(window.picture()), "528x432");
    window.init_surface();
    window.draw(qd_bars().data());
    EXPECT_TRUE(is_white(qd_colour_at(window.picture(), 3, 428)));
    EXPECT_FALSE(is_white(qd_colour_at(window.picture(), 100, 428)));
    EXPECT_EQ(ui_misfits(window.baseWidget()), "");
}

TEST(DisplayWindow, ClosingMakesItAnIconThatComesBack)
{
    Video window("anna@orion");
    window.draw(qd_bars().data());
    const std::unique_ptr<Display, int (*)(Display*)> manager(XOpenDisplay(nullptr), XCloseDisplay);
    XSelectInput(manager.get(), DefaultRootWindow(manager.get()), SubstructureNotifyMask);
    XSync(manager.get(), False);
    qd_close_window(window.baseWidget());
    // What a window manager is told: make it an icon.
    const Atom change = XInternAtom(manager.get(), "WM_CHANGE_STATE", False);
    EXPECT_TRUE(qd_pump_until([&] {
        XEvent event {};
        while (XCheckTypedEvent(manager.get(), ClientMessage, &event))
            if (event.xclient.message_type == change
                && event.xclient.window == XtWindow(window.baseWidget())
                && event.xclient.data.l[0] == IconicState)
                return true;
        return false;
    }));
    XUnmapWindow(theApplication->display(), XtWindow(window.baseWidget())); // as it then does
    window.draw(qd_bars().data());
    window.setStatistics("1 kbps", "2 fps");
    window.show();
    EXPECT_TRUE(qd_pump_until([&] {
        return qd_on_screen(window.picture()) && is_white(qd_colour_at(window.picture(), 5, 5));
    }));
}

TEST(DisplayWindows, StandWhereTheResourcesSayInTheOrderOfOpening)
{
    ui_app();
    Widget owner = XtVaCreateWidget(
        "placed", widgetClass, theApplication->baseWidget(), XmNwidth, 1, XmNheight, 1, nullptr);
    QD_Display_Windows windows(owner);
    const auto open = [&](const char* name) {
        std::unique_ptr<QD_Display_View> view = windows.make_display(name);
        view->show();
        qd_pump();
        return view;
    };
    const auto corner = [](const std::unique_ptr<QD_Display_View>& view) {
        Widget shell = dynamic_cast<DisplayWindowMainWindow&>(*view).baseWidget();
        return std::to_string(left_of(shell)) + "," + std::to_string(top_of(shell));
    };
    // The screen is 1024 wide: two of 200 fit beside one another from 620 on.
    std::unique_ptr<QD_Display_View> views[3];
    const char* const corners[] = {"620,30", "820,30", "620,330"};
    for (int round = 0; round < 2; ++round) { // the second time in places that were left
        for (int i = 0; i < 3 - round; ++i) {
            views[i] = open("a");
            EXPECT_EQ(corner(views[i]), corners[i]);
        }
        views[0].reset();
        views[1].reset();
    }
    XtDestroyWidget(owner);

    QD_Display_Windows anywhere(theApplication->baseWidget());
    EXPECT_EQ(corner(anywhere.make_display("f")), "0,0") << "the window manager's affair";
}
