#include "tests/support/program.h"

namespace {

void count_again(XtPointer times, XtIntervalId*)
{
    ++*static_cast<int*>(times);
    XtAppAddTimeOut(theApplication->app_context(), 20, count_again, times);
}

}

TEST(ControlLoop, LeavesTheToolkitsTimersOnTimeAndGoesOnWhileTheToolkitIsBusy)
{
    QD_Program program;
    program.framework.announce(1, 1, "me");
    EXPECT_TRUE(program.run_until([] { return QD_Session_Ref()->get_member(1) != nullptr; }));

    static int times = 0; // in a second: 50, or 10 if they wait for the end of each pass
    count_again(&times, nullptr);
    program.run_until([] { return false; }, std::chrono::seconds(1));
    EXPECT_GT(times, 25);

    // As while a selection is handed over: events and timers, no work procedures.
    for (int i = 0; i < 3; ++i) {
        program.framework.send_event(51, "ping");
        pollfd answer {program.framework.descriptor(), POLLIN, 0};
        EXPECT_TRUE(qd_pump_until([&] { return ::poll(&answer, 1, 0) > 0; }, 300));
        EXPECT_EQ(program.framework.hear(12).size(), 12u);
    }
}

// As while a window manager moves a window.
TEST(ControlLoop, GoesOnWhileTheServerTakesNothing)
{
    QD_Program program;
    program.framework.announce(1, 1, "me");
    EXPECT_TRUE(program.run_until([] { return QD_Session_Ref()->get_member(1) != nullptr; }));
    mainWindow->playVideo();
    Display* const other = XOpenDisplay(nullptr);
    EXPECT_TRUE(program.run_until([] { return QD_Session_Ref()->get_member(1)->get_shown() > 0; }));
    const auto answers = [&](int milliseconds) {
        program.framework.send_event(51, "ping");
        pollfd answer {program.framework.descriptor(), POLLIN, 0};
        const bool came = program.run_until(
            [&] { return ::poll(&answer, 1, 0) > 0; }, std::chrono::milliseconds(milliseconds));
        return came && program.framework.hear(12).size() == 12;
    };
    XGrabServer(other);
    XSync(other, False);
    const auto until
        = std::chrono::steady_clock::now() + std::chrono::seconds(3); // for 75 pictures
    while (std::chrono::steady_clock::now() < until)
        ASSERT_TRUE(answers(300));
    XCloseDisplay(other);
    EXPECT_TRUE(answers(300));
}
