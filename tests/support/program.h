// The whole program in the test's own process.
#pragma once

#include <gtest/gtest.h> // before all X headers: their macros would spoil it

#include "app/control_loop.h"
#include "app/main_window.h"
#include "app/termination.h"
#include "tests/support/framework.h"
#include "tests/support/x_app.h"

#include <filesystem>
#include <functional>
#include <thread>

/// How many entries a directory has.
inline size_t qd_count_in(const char* directory)
{
    return static_cast<size_t>(std::distance(std::filesystem::directory_iterator(directory), {}));
}

/// Sockets of this process, by what /proc says of its descriptors.
inline size_t qd_sockets()
{
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        count += std::filesystem::read_symlink(entry.path(), gone).string().starts_with("socket:");
    }
    return count;
}

/// The program as main() sets it up, with the test as its framework. Everything
/// is made for one test and one process: ways out end the process.
struct QD_Program {
    QD_Program()
    {
        qd_use_test_address();
        setenv("QD_MIC", "tone:440", 1);
        setenv("QD_SPEAKER", "null", 1);
        QD_Test_App::get();
        std::thread([] {}).join(); // a sanitizer's own thread comes with the first one
        threads = qd_count_in("/proc/self/task");
        sockets_before = qd_sockets();
        char number[] = "1";
        std::string port = framework.port();
        char* argv[] = {number, number, number, number, port.data(), nullptr};
        ctrlWorkProcHandle
            = XtAppAddWorkProc(theApplication->appContext(), ctrlWorkProc, &termination);
        mainWindow = new MainWindowMainWindow(
            "Quendal Videoconferencing", argv, 5, termination.get_handle());
        mainWindow->show();
        framework.accept();
    }
    ~QD_Program()
    {
        delete mainWindow;
        mainWindow = nullptr;
    }

    Widget find(const char* name) const { return qd_find(mainWindow->baseWidget(), name); }

    // Runs the control loop until the framework's events have been handled.
    void handle_all()
    {
        framework.send_event(51, "ping");
        pollfd answer {framework.descriptor(), POLLIN, 0};
        while (::poll(&answer, 1, 0) == 0)
            ctrlWorkProc(&termination);
        framework.hear(12);
    }

    // Runs the control loop and handles the window's events until then. Returns whether it came.
    bool run_until(const std::function<bool()>& done,
        std::chrono::milliseconds bound = std::chrono::seconds(20))
    {
        const auto end = std::chrono::steady_clock::now() + bound;
        while (!done()) {
            if (std::chrono::steady_clock::now() >= end)
                return false;
            ctrlWorkProc(&termination);
            qd_pump_until([] { return true; });
        }
        return true;
    }

    QD_Test_Framework framework;
    QD_Termination termination;
    size_t threads = 0;
    size_t sockets_before = 0;
};
