// The one toolkit application of a test program, and the user's hands on it.
#pragma once

#include "platform/vk/app.h"
#include "tests/support/x_server.h"

#include <X11/Xutil.h>
#include <Xm/TextF.h>
#include <poll.h>

/// Server and application, made at the first use. The screen is QD_TEST_SCREEN
/// ("640x480x16") if that is set, and of such a resolution that fonts which keep
/// to it are far too large. The options file of the session, if one is
/// written, lands in a directory of its own.
class QD_Test_App {
public:
    static QD_Test_App& get(std::vector<std::string> words = {})
    {
        static QD_Test_App app(std::move(words));
        return app;
    }

private:
    explicit QD_Test_App(std::vector<std::string> words)
    {
        ::setenv("HOME", home_.path().c_str(), 1);
        words.insert(words.begin(), "test");
        std::vector<char*> argv;
        for (std::string& word : words)
            argv.push_back(word.data());
        int argc = static_cast<int>(argv.size());
        argv.push_back(nullptr);
        new VkApp("Application", &argc, argv.data()); // theApplication, until the process ends
    }

    QD_X_Server server_ {
        ::getenv("QD_TEST_SCREEN") != nullptr ? ::getenv("QD_TEST_SCREEN") : "1024x768x24",
        "-dpi 192"};
    const QD_Temp_Dir home_;
};

/// Handles events until `done` holds or the time is up. Returns whether it holds.
template <typename Condition> bool qd_pump_until(Condition done, int milliseconds = 10000)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        while (theApplication->pending_input())
            XtAppProcessEvent(theApplication->app_context(), XtIMAll);
        if (done())
            return true;
        if (Clock::now() >= end)
            return false;
        pollfd connection {theApplication->connection_number(), POLLIN, 0};
        ::poll(&connection, 1, 5);
    }
}

/// Handles all events there are, once the server has answered everything so far.
inline void qd_pump()
{
    XSync(theApplication->display(), False);
    qd_pump_until([] { return true; });
}

/// Sends a press and a release of the first button in a widget, which handles them later.
inline void qd_send_click(Widget widget)
{
    static Time now = 0;
    now += 10000; // never the second half of a double click
    Position x = 0;
    Position y = 0;
    XtTranslateCoords(widget, 5, 5, &x, &y);
    for (int type : {ButtonPress, ButtonRelease}) {
        XEvent event {};
        event.xbutton = {type, 0, True, XtDisplay(widget), XtWindow(widget),
            RootWindowOfScreen(XtScreen(widget)), None, now, 5, 5, x, y,
            type == ButtonRelease ? unsigned {Button1Mask} : 0, Button1, True};
        XSendEvent(XtDisplay(widget), XtWindow(widget), False, NoEventMask, &event);
    }
    XFlush(XtDisplay(widget));
}

/// The same, and has it handled.
inline void qd_click(Widget widget)
{
    qd_send_click(widget);
    qd_pump();
}

/// Gives the keyboard to a window on the screen, as a window manager would.
inline void qd_focus(Widget shell)
{
    XSetInputFocus(XtDisplay(shell), XtWindow(shell), RevertToParent, CurrentTime);
    qd_pump();
}

/// What a window manager sends when the user closes a window.
inline void qd_close_window(Widget shell)
{
    Display* display = XtDisplay(shell);
    XEvent event {};
    event.xclient = {ClientMessage, 0, True, display, XtWindow(shell),
        XInternAtom(display, "WM_PROTOCOLS", False), 32, {}};
    event.xclient.data.l[0] = static_cast<long>(XInternAtom(display, "WM_DELETE_WINDOW", False));
    XSendEvent(display, XtWindow(shell), False, NoEventMask, &event);
    qd_pump();
}

/// The colour of one pixel of a window on the screen, 8 bits each, whatever the screen's depth.
struct QD_Colour {
    int red;
    int green;
    int blue;
};

inline QD_Colour qd_colour_at(Widget widget, int x, int y)
{
    Display* display = XtDisplay(widget);
    XImage* image = XGetImage(display, XtWindow(widget), x, y, 1, 1, AllPlanes, ZPixmap);
    if (image == nullptr)
        return {-1, -1, -1};
    XColor colour {};
    colour.pixel = XGetPixel(image, 0, 0);
    XDestroyImage(image);
    XQueryColor(display, DefaultColormap(display, DefaultScreen(display)), &colour);
    return {colour.red >> 8, colour.green >> 8, colour.blue >> 8};
}

/// The widget of that name somewhere below `top`; null if there is none.
inline Widget qd_find(Widget top, const char* name)
{
    return XtNameToWidget(top, (std::string("*") + name).c_str());
}

/// The text of the XmTextField of that name, in UTF-8.
inline std::string qd_text(Widget top, const char* name)
{
    char* text = XmTextFieldGetString(qd_find(top, name));
    std::string out = text;
    XtFree(text);
    return out;
}
