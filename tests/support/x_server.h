// A private X server for one test program, without a screen of its own.
#pragma once

#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

/// Xvfb on a display number of its own choice, which DISPLAY then names; "" if it does not start.
class QD_X_Server {
public:
    /// `options` are further ones of the server.
    explicit QD_X_Server(const std::string& screen = "1024x768x24", const std::string& options = "")
    {
        const QD_Temp_Dir dir;
        const std::string number = dir / "number";
        server_.emplace(std::vector<std::string> {"sh", "-c",
            "exec Xvfb -displayfd 3 -screen 0 " + screen + " -nolisten tcp " + options + " 3> "
                + number});
        const bool started
            = qd_wait_for([&] { return qd_read_file(number).ends_with('\n'); }, START);
        display_ = started ? ":" + std::to_string(atoi(qd_read_file(number).c_str())) : "";
        ::setenv("DISPLAY", display_.c_str(), 1);
    }

    /// ":7"
    const std::string& display() const { return display_; }

    pid_t pid() const { return server_->pid(); }

    /// Starts the window manager. Its coming is to be waited for.
    void manage() { manager_.emplace(std::vector<std::string> {"mwm", "-display", display_}); }

    /// Lets it stand still, with its clients' requests, and go on.
    void stop() const { kill(server_->pid(), SIGSTOP); }
    void go_on() const { kill(server_->pid(), SIGCONT); }

    /// Presses and releases a key for the window that has the keyboard. Returns 0 if it could.
    static int press(const std::string& key) { return qd_run({"xdotool", "key", key}); }

private:
    static constexpr std::chrono::seconds START {20};
    std::optional<QD_Process> server_;
    std::optional<QD_Process> manager_; // goes first
    std::string display_;
};
