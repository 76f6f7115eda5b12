#include "app/control_loop.h"

#include "app/main_window.h"
#include "app/termination.h"
#include "platform/base/process_end.h"
#include "platform/vk/app.h"

#include <cstdlib>
#include <thread>
#include <utility>

MainWindowMainWindow* mainWindow = nullptr;
XtWorkProcId ctrlWorkProcHandle = 0;

namespace {

// Loops of the toolkit's own call no idle procedure, but timers.
constexpr unsigned long MISSED_MS = 150; // the idle procedure returns before that
constexpr unsigned long INSTEAD_MS = 40;
XtIntervalId instead = 0; // of the next call in place of the idle procedure, 0: none
bool passing = false;

[[noreturn]] void end_session()
{
    qd_end_within(MainWindowMainWindow::END_SECONDS, EXIT_SUCCESS);
    delete mainWindow;
    mainWindow = nullptr;
    XFlush(theApplication->display()); // the windows go before the wait, not after it
    std::this_thread::sleep_for(std::chrono::seconds(1)); // in full, whatever signals come
    exit(EXIT_SUCCESS);
}

void pass(XtPointer client, int wait_ms)
{
    if (static_cast<const QD_Termination*>(client)->requested())
        end_session();
    if (mainWindow == nullptr || std::exchange(passing, true))
        return;
    const int result = mainWindow->handle_events(wait_ms);
    passing = false;
    if (result == -1)
        end_session();
}

void call_instead(XtPointer client, XtIntervalId* due);

void call_instead_in(unsigned long milliseconds, XtPointer client)
{
    if (instead != 0)
        XtRemoveTimeOut(instead);
    instead = XtAppAddTimeOut(theApplication->app_context(), milliseconds, call_instead, client);
}

void call_instead(XtPointer client, XtIntervalId* /*due*/)
{
    instead = 0;
    pass(client, 0);
    call_instead_in(INSTEAD_MS, client);
}

}

Boolean ctrlWorkProc(XtPointer client)
{
    call_instead_in(MISSED_MS, client);
    pass(client, theApplication->pending_input() ? 0 : QD_Orvik_Control::WAIT_MS);
    return False;
}

void qd_stop_control_loop()
{
    if (ctrlWorkProcHandle != 0)
        XtRemoveWorkProc(ctrlWorkProcHandle);
    ctrlWorkProcHandle = 0;
    if (instead != 0)
        XtRemoveTimeOut(instead);
    instead = 0;
}
