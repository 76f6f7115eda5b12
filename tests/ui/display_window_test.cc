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

template <typename Value> Value get(Widget widget, const char* resource)
{
    Value value {};
    XtVaGetValues(widget, resource, &value, nullptr);
    return value;
}

int left_of(Widget widget) { return get<Position>(widget, XmNx); }
int top_of(Widget widget) { return get<Position>(widget, XmNy); }

std::string property(Widget shell, const char* name)
{
    Display* display = XtDisplay(shell);
    Atom type = 0;
    int format = 0;
    unsigned long count = 0;
    unsigned long rest = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(display, XtWindow(shell), XInternAtom(display, name, False), 0, 100, False,
        AnyPropertyType, &type, &format, &count, &rest, &data);
    std::string text = data ? reinterpret_cast<char*>(data) : "";
    XFree(data);
    return text;
}

bool is_white(const QD_Colour& c) { return c.red > 240 && c.green > 240 && c.blue > 240; }

}

TEST(DisplayWindow, SaysWhosePictureItIs)
{
    struct {
        const char* name;
        const char* shown;
        const char* widget;
    } const cases[] = {
        {"anna@orion.example.org", "anna@orion.example.org", "anna@orion.example.org"},
        {"J\xc3\xb6rg M.@192.168.4.17", "J\xc3\xb6rg M.@192.168.4.17",
            "J\xc3\xb6rg M.@192.168.4.17"},
        {"a\xff*b c\n", "a\xef\xbf\xbd*b c\xef\xbf\xbd", "a\xff*b c\n"},
        {"", "Video Display", "displayWindow"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.shown);
        Video window(c.name);
        EXPECT_STREQ(XtName(window.baseWidget()), c.widget);
        EXPECT_EQ(window.title(), c.shown);
        EXPECT_EQ(property(window.baseWidget(), "_NET_WM_NAME"), c.shown);
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
    Widget form = qd_find(window.baseWidget(), "dpy_form");
    EXPECT_EQ(get<Dimension>(form, XmNwidth), 176);
    EXPECT_EQ(get<Dimension>(form, XmNheight), 215);
    EXPECT_EQ(get<Dimension>(window.picture(), XmNwidth), 176);
    EXPECT_EQ(get<Dimension>(window.picture(), XmNheight), 144);
    EXPECT_EQ(top_of(window.picture()), 0);
    EXPECT_EQ(ui_misfits(window.baseWidget()), "");

    XtVaSetValues(window.baseWidget(), XmNwidth, 528, XmNheight, 503, nullptr);
    qd_pump();
    EXPECT_EQ(get<Dimension>(window.picture(), XmNwidth), 528);
    EXPECT_EQ(get<Dimension>(window.picture(), XmNheight), 432);
    window.init_surface();
    window.draw(qd_bars().data());
    EXPECT_TRUE(is_white(qd_colour_at(window.picture(), 3, 428)));
    EXPECT_FALSE(is_white(qd_colour_at(window.picture(), 100, 428)));
    EXPECT_EQ(ui_misfits(window.baseWidget()), "");
}

TEST(DisplayWindow, DrawsWithoutBeingPreparedOrShown)
{
    DisplayWindowMainWindow window((static_cast<void>(ui_app()), "unseen"));
    window.draw(qd_bars().data());
    window.init_surface();
    window.show();
    Widget picture = qd_find(window.baseWidget(), "picture");
    EXPECT_TRUE(qd_pump_until([&] { return is_white(qd_colour_at(picture, 5, 5)); }));
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
    std::vector<std::unique_ptr<QD_Display_View>> views;
    for (const char* name : {"a", "b", "c"})
        views.push_back(open(name));
    EXPECT_EQ(corner(views[0]), "620,30");
    EXPECT_EQ(corner(views[1]), "820,30");
    EXPECT_EQ(corner(views[2]), "620,330");
    views[1].reset();
    views[0].reset();
    views[0] = open("d");
    EXPECT_EQ(corner(views[0]), "620,30") << "a place that was left";
    views[1] = open("e");
    EXPECT_EQ(corner(views[1]), "820,30");
    XtDestroyWidget(owner);

    QD_Display_Windows anywhere(theApplication->baseWidget());
    EXPECT_EQ(corner(anywhere.make_display("f")), "0,0") << "the window manager's affair";
}
