// How soon a window of this process answers to a button that is pressed.
#pragma once

#include "bench/percentile.h"
#include "tests/support/wait.h"
#include "tests/support/x_app.h"

#include <Xm/PushB.h>
#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <thread>
#include <vector>

/// Another program, with a connection of its own, that presses an XmPushButton
/// of this one, which is on the screen.
class QD_Finger {
public:
    explicit QD_Finger(Widget button) :
        display_(XOpenDisplay(nullptr)),
        button_(button),
        window_(XtWindow(button))
    {
        XtAddCallback(button_, XmNarmCallback, armed, this);
    }
    ~QD_Finger()
    {
        XtRemoveCallback(button_, XmNarmCallback, armed, this);
        XCloseDisplay(display_);
    }
    QD_Finger(const QD_Finger&) = delete;

    /// Presses `presses` times at intervals of 3 to 3 + `spread` ms, while this thread handles
    /// events. Returns the milliseconds until the callback ran, of each press that was answered.
    std::vector<double> press_often(int presses, unsigned spread)
    {
        std::vector<double> milliseconds;
        std::atomic<bool> done = false;
        std::thread person([&] {
            std::mt19937 random(1);
            for (int i = 0; i < presses; ++i) {
                std::this_thread::sleep_for(std::chrono::milliseconds(3 + random() % spread));
                entered_ = 0;
                const auto begin = Clock::now();
                press();
                if (!qd_wait_for([&] { return entered_ != 0; }))
                    break;
                const Clock::duration took = Clock::duration(entered_) - begin.time_since_epoch();
                milliseconds.push_back(std::chrono::duration<double, std::milli>(took).count());
            }
            done = true;
            press(); // the loop returns only at an event
        });
        while (!done)
            XtAppProcessEvent(theApplication->app_context(), XtIMAll);
        person.join();
        return milliseconds;
    }

private:
    using Clock = std::chrono::steady_clock;

    static void armed(Widget, XtPointer self, XtPointer)
    {
        static_cast<QD_Finger*>(self)->entered_ = Clock::now().time_since_epoch().count();
    }

    void press()
    {
        time_ += 1000;
        for (int type : {ButtonPress, ButtonRelease}) {
            XEvent event {};
            event.xbutton
                = {type, 0, True, display_, window_, DefaultRootWindow(display_), None, time_, 5, 5,
                    0, 0, type == ButtonRelease ? unsigned {Button1Mask} : 0, Button1, True};
            XSendEvent(display_, window_, False, NoEventMask, &event);
        }
        XFlush(display_);
    }

    Display* display_;
    Widget button_;
    Window window_;
    Time time_ = 0;
    std::atomic<Clock::rep> entered_ = 0;
};
