// quendal: the videoconferencing client, started by the framework with four arguments.
#include "app/control_loop.h"
#include "app/main_window.h"
#include "app/termination.h"
#include "platform/vk/app.h"

#include <cstdio>

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // a log tells at once what has happened
    InitEZ();
    VkApp application("Application", &argc, argv);
    QD_Termination termination;
    ctrlWorkProcHandle = XtAppAddWorkProc(application.appContext(), ctrlWorkProc, &termination);
    mainWindow = new MainWindowMainWindow(
        "Quendal Videoconferencing", argv, argc, termination.get_handle());
    mainWindow->show();
    application.run();
}
