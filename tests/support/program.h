// The whole program in the test's own process.
#pragma once

#include <gtest/gtest.h> // before all X headers: their macros would spoil it

#include "app/control_loop.h"
#include "app/main_window.h"
#include "app/termination.h"
#include "tests/support/framework.h"
#include "tests/support/x_app.h"

#include <functional>

/// The program as main() sets it up, with the test as its framework. Ways out end the process.
struct QD_Program {
    QD_Program()
    {
        qd_use_test_address();
        setenv("QD_MIC", "tone:440", 1);
        setenv("QD_SPEAKER", "null", 1);
        QD_Test_App::get();
        char number[] = "1";
        std::string port = framework.port();
        char* argv[] = {number, number, number, number, port.data(), nullptr};
        ctrlWorkProcHandle
            = XtAppAddWorkProc(theApplication->app_context(), ctrlWorkProc, &termination);
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
};
