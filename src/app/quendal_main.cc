// quendal: the videoconferencing client, started by the framework with four arguments.
#include "app/control_loop.h"
#include "app/main_window.h"
#include "app/termination.h"
#include "platform/base/output.h"
#include "platform/vk/app.h"

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

// The panels lie beside the program, which may not be on the PATH: looked for there last.
void find_panels()
{
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    const char* const path = getenv("PATH");
    const std::string before = path != nullptr && *path != '\0' ? path + std::string(":") : "";
    if (!error)
        setenv("PATH", (before + program.parent_path().string()).c_str(), 1);
}

}

int main(int argc, char** argv)
{
    qd_queue_output();
    find_panels();
    InitEZ();
    VkApp application("Application", &argc, argv);
    QD_Termination termination;
    ctrlWorkProcHandle = XtAppAddWorkProc(application.app_context(), ctrlWorkProc, &termination);
    mainWindow = new MainWindowMainWindow(
        "Quendal Videoconferencing", argv, argc, termination.get_handle());
    mainWindow->show();
    application.run();
}
