#include "app/control_loop.h"

#include "app/main_window.h"
#include "app/termination.h"
#include "platform/vk/app.h"

#include <cstdlib>
#include <unistd.h>

MainWindowMainWindow* mainWindow = nullptr;
XtWorkProcId ctrlWorkProcHandle = 0;

namespace {

[[noreturn]] void end_session()
{
    delete mainWindow;
    mainWindow = nullptr;
    XFlush(theApplication->display()); // the windows go before the wait, not after it
    sleep(1);
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
