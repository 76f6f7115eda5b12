// A private X server for one test program, without a screen of its own.
#pragma once

#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

/// Xvfb on a display number of its own choice, which DISPLAY then names.
class QD_X_Server {
public:
    /// `options` are further ones of the server.
    explicit QD_X_Server(
        const char* screen = "1024x768x24", const std::vector<std::string>& options = {})
    {
        std::vector<std::string> command {
            "Xvfb", "-displayfd", "1", "-screen", "0", screen, "-nolisten", "tcp"};
        command.insert(command.end(), options.begin(), options.end());
        const QD_Temp_Dir dir;
        server_.emplace(command, QD_Process::Set_Up {.out = dir / "number"});
        std::string number;
        const bool started = qd_wait_for(
            [&] { return (number = qd_read_file(dir / "number")).ends_with('\n'); }, START);
        if (!started)
            return;
        number.pop_back();
        display_ = ":" + number;
        ::setenv("DISPLAY", display_.c_str(), 1);
    }

    /// ":7"; "" if the server could not be started.
    const std::string& display() const { return display_; }

    /// Starts the window manager. Its coming is to be waited for.
    void manage() { manager_.emplace(std::vector<std::string> {"mwm", "-display", display_}); }

    /// Presses and releases a key for the window that has the keyboard, perhaps
    /// while another ("alt", "ctrl") is held. Returns 0, -1 on failure.
    int press(const std::string& key, const std::string& held = "") const
    {
        std::vector<std::string> command {"xdotool", "key", key};
        if (!held.empty())
            command = {"xdotool", "keydown", held, "key", key, "keyup", held};
        return qd_run(command) == 0 ? 0 : -1;
    }

private:
    static constexpr std::chrono::seconds START {20};
    std::optional<QD_Process> server_;
    std::optional<QD_Process> manager_; // goes first
    std::string display_;
};
