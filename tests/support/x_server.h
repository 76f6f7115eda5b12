// A private X server for one test program, without a screen of its own.
#pragma once

#include "tests/support/process.h"

#include <cstdlib>
#include <optional>
#include <poll.h>
#include <string>
#include <unistd.h>

/// Xvfb on a display number of its own choice, which DISPLAY then names.
class QD_X_Server {
public:
    /// `options` are further ones of the server.
    explicit QD_X_Server(
        const char* screen = "1024x768x24", const std::vector<std::string>& options = {})
    {
        int ends[2];
        if (::pipe(ends) != 0)
            return;
        std::vector<std::string> command {"Xvfb", "-displayfd", std::to_string(ends[1]), "-screen",
            "0", screen, "-nolisten", "tcp"};
        command.insert(command.end(), options.begin(), options.end());
        server_.emplace(command);
        ::close(ends[1]);
        // The number ends with a new line; the end of file tells of a server that could not start.
        std::string number;
        char c = 0;
        pollfd waiting {ends[0], POLLIN, 0};
        while (::poll(&waiting, 1, START_MS) > 0 && ::read(ends[0], &c, 1) == 1 && c != '\n')
            number += c;
        ::close(ends[0]);
        if (c != '\n')
            return;
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
    static constexpr int START_MS = 20000;
    std::optional<QD_Process> server_;
    std::optional<QD_Process> manager_; // goes first
    std::string display_;
};
