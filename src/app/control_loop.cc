#include "app/control_loop.h"

#include "app/main_window.h"
#include "app/termination.h"
#include "platform/net/process_end.h"
#include "platform/vk/app.h"

#include <cstdlib>
#include <thread>

MainWindowMainWindow* mainWindow = nullptr;
XtWorkProcId ctrlWorkProcHandle = 0;

namespace {

[[noreturn]] void end_session()
{
    qd_end_within(MainWindowMainWindow::END_SECONDS, EXIT_SUCCESS);
    delete mainWindow;
    mainWindow = nullptr;
    XFlush(theApplication->display()); // the windows go before the wait, not after it
    std::this_thread::sleep_for(std::chrono::seconds(1)); // in full, whatever signals come
    exit(EXIT_SUCCESS);
}

}

Boolean ctrlWorkProc(XtPointer client)
{
    if (static_cast<const QD_Termination*>(client)->requested())
        end_session();
    if (mainWindow == nullptr)
        return False;
    const int wait_ms = theApplication->pendingInput() ? 0 : QD_Orvik_Control::WAIT_MS;
    if (mainWindow->handle_events(wait_ms) == -1)
        end_session();
    return False;
}
