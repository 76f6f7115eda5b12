// The real client with the test as its framework.
#pragma once

#include "tests/support/framework.h"
#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

/// One client at the test's loopback address number `host`, with a home and
/// current directory of its own. Events are written by hand.
class QD_Client_Under_Test {
public:
    struct Set_Up {
        std::string mic = "silence";
        std::string speaker = "null";
        std::string camera = "testcard";
        std::string options_file {}; // bytes, "" for none
        std::vector<std::string> toolkit_options {};
        std::map<std::string, std::string> environment {}; // further or instead of the test's own
        std::string out {}; // what it prints goes here, "" for the file "log"
    };

    QD_Client_Under_Test(int host, const Set_Up& set_up)
    {
        if (!set_up.options_file.empty())
            qd_write_file(file(".qd.cfg"), set_up.options_file);
        std::vector<std::string> command = set_up.toolkit_options;
        command.insert(command.begin(), QD_BUILD_DIR "/quendal");
        command.insert(command.end(), {"11", "22", "33", framework_.port()});
        auto environment = set_up.environment;
        environment.insert({{"HOME", dir_.path()}, {"QD_LOCAL_ADDRESS", qd_test_address(host)},
            {"QD_MIC", set_up.mic}, {"QD_SPEAKER", set_up.speaker}, {"QD_CAMERA", set_up.camera}});
        child_.emplace(command,
            QD_Surroundings {set_up.out.empty() ? file("log") : set_up.out, dir_.path(),
                std::move(environment)});
        registered_ = framework_.accept() == std::string("\0\0\0\x0b\0\0\0\x16\0\0\0\x21", 12);
    }

    /// Whether it came and registered with the arguments it was given.
    bool registered() const { return registered_; }

    QD_Test_Framework& framework() { return framework_; }

    /// Tells it of members: "m2" is number 2, at that address. Returns whether it has taken them
    /// in.
    bool meets(std::initializer_list<int> members)
    {
        for (int member : members)
            framework_.announce(member, member, "m" + std::to_string(member));
        return registered_ && framework_.settle();
    }

    /// Ends the session. Returns the exit status, nothing if it does not end.
    std::optional<int> end()
    {
        framework_.end_session();
        return wait();
    }

    std::optional<int> wait() { return child_->wait(std::chrono::seconds(20)); }
    pid_t pid() const { return child_->pid(); }
    std::string file(const std::string& name) const { return dir_.file(name); }
    std::string log() const { return qd_read_file(file("log")); }

private:
    QD_Temp_Dir dir_;
    std::optional<QD_Process> child_;
    QD_Test_Framework framework_;
    bool registered_ = false;
};

/// A person at the real windows, by xdotool.
class QD_Person {
public:
    explicit QD_Person(const QD_Client_Under_Test& client) : QD_Person(client.pid()) {}
    explicit QD_Person(pid_t client) : client_(client) {}

    /// Finds the client's window whose title begins so and keeps to it. Returns whether it is
    /// there; look_at() waits for it.
    bool find(const std::string& title) { return !(window_ = search(title)).empty(); }
    bool look_at(const std::string& title)
    {
        return qd_wait_for([&] { return find(title); }, std::chrono::seconds(20));
    }

    /// Waits until no such window is on the screen. Returns whether that came to be.
    bool loses(const std::string& title) const
    {
        return qd_wait_for([&] { return search(title).empty(); }, std::chrono::seconds(20));
    }

    /// The window's number, as the tools take it.
    const std::string& window() const { return window_; }

    /// Clicks at a place of the window.
    int click(int x, int y) const
    {
        return qd_run({"xdotool", "mousemove", "--window", window_, std::to_string(x),
            std::to_string(y), "click", "1"});
    }

    /// Moves to a place of the window and holds a button there, until it is let go anywhere.
    int hold(int button, int x, int y) const
    {
        return qd_run({"xdotool", "mousemove", "--window", window_, "--", std::to_string(x),
            std::to_string(y), "mousedown", std::to_string(button)});
    }
    static int let_go(int button) { return qd_run({"xdotool", "mouseup", std::to_string(button)}); }

    int press(const std::string& keys) const { return focus({"key", keys}); }
    int write(const std::string& text) const { return focus({"type", text}); }

    /// Gives the keyboard to the window. `then` are further words of xdotool's.
    int focus(const std::vector<std::string>& then = {}) const
    {
        std::vector<std::string> command {"xdotool", "windowfocus", "--sync", window_};
        command.insert(command.end(), then.begin(), then.end());
        return qd_run(command);
    }

    /// Types for whichever window has the keyboard. Alt is held longer than the key.
    static int type(const std::vector<std::string>& keys)
    {
        std::vector<std::string> command {"xdotool"};
        for (const std::string& key : keys)
            if (key.starts_with("alt+"))
                command.insert(
                    command.end(), {"keydown", "alt", "key", key.substr(4), "keyup", "alt"});
            else
                command.insert(command.end(), {"key", key});
        return qd_run(command);
    }

private:
    std::string search(const std::string& title) const
    {
        const std::string windows = qd_output("xdotool search --onlyvisible --all --pid "
            + std::to_string(client_) + " --name '^" + title + "'");
        return windows.substr(0, windows.find('\n'));
    }

    const pid_t client_;
    std::string window_;
};
