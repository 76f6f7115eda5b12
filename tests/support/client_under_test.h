// The real client with the test as its framework.
#pragma once

#include "platform/net/bytes.h"
#include "platform/net/fd.h"
#include "tests/support/loopback.h"
#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

/// One client at the test's loopback address number `host`, with a home and
/// current directory of its own. Events are written by hand.
class QD_Client_Under_Test {
public:
    struct Set_Up {
        std::string mic = "silence";
        std::string speaker = "null";
        std::string camera = "testcard";
        std::string options_file; // bytes, "" for none
        std::vector<std::string> toolkit_options;
        std::map<std::string, std::string> environment;
    };

    QD_Client_Under_Test(int host, const Set_Up& set_up)
    {
        QD_Fd listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        ::bind(listener.get(), reinterpret_cast<sockaddr*>(&address), size);
        ::listen(listener.get(), 1);
        ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &size);

        if (!set_up.options_file.empty())
            qd_write_file(file(".qd.cfg"), set_up.options_file);
        std::vector<std::string> command {QD_BUILD_DIR "/quendal"};
        for (const std::string& option : set_up.toolkit_options)
            command.push_back(option);
        for (const std::string& word : {std::string("11"), std::string("22"), std::string("33"),
                 std::to_string(ntohs(address.sin_port))})
            command.push_back(word);
        QD_Process::Set_Up process;
        process.out = file("log");
        process.errors = "&1";
        process.directory = dir_.path();
        process.environment = {{"HOME", dir_.path()}, {"QD_LOCAL_ADDRESS", qd_test_address(host)},
            {"QD_MIC", set_up.mic}, {"QD_SPEAKER", set_up.speaker}, {"QD_CAMERA", set_up.camera}};
        for (const auto& [name, value] : set_up.environment)
            process.environment[name] = value;
        child_.emplace(command, process);

        pollfd waiting {listener.get(), POLLIN, 0};
        if (::poll(&waiting, 1, START_MS) > 0)
            link_.reset(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        registered_ = hear(12) == std::string("\0\0\0\x0b\0\0\0\x16\0\0\0\x21", 12);
    }

    /// Whether it came and registered with the arguments it was given.
    bool registered() const { return registered_; }

    void send_event(int type, const std::string& payload) const
    {
        std::string event(8, '\0');
        auto* bytes = reinterpret_cast<uint8_t*>(event.data());
        qd_put_u32(bytes, static_cast<uint32_t>(type));
        qd_put_u32(bytes + 4, static_cast<uint32_t>(payload.size()));
        send(event + payload);
    }

    void send(const std::string& bytes) const
    {
        [[maybe_unused]] const ssize_t sent
            = ::send(link_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    }

    /// Exactly so many bytes, fewer if they do not come in time.
    std::string hear(size_t bytes) const
    {
        std::string got;
        pollfd waiting {link_.get(), POLLIN, 0};
        while (got.size() < bytes && ::poll(&waiting, 1, START_MS) > 0) {
            char c = 0;
            if (::recv(link_.get(), &c, 1, 0) != 1)
                break;
            got += c;
        }
        return got;
    }

    void announce(int id, int host, const std::string& name) const
    {
        send_event(1, record('=', id, host) + static_cast<char>(name.size()) + name);
    }
    void remove(int id, int host) const { send_event(1, record('?', id, host) + '\0'); }

    /// Sends an echo request and waits for it: what was sent before has been handled then.
    bool settle() const
    {
        send_event(51, "ping");
        return hear(12) == std::string("\0\0\0\x33\0\0\0\4ping", 12);
    }

    /// Ends the session. Returns the exit status, nothing if it does not end.
    std::optional<int> end()
    {
        send_event(1, ">");
        return wait();
    }

    void close_link() { link_.reset(); }
    std::optional<int> wait() { return child_->wait(std::chrono::seconds(20)); }
    pid_t pid() const { return child_->pid(); }
    std::string file(const std::string& name) const { return dir_.file(name); }
    std::string log() const { return qd_read_file(file("log")); }
    const std::string& directory() const { return dir_.path(); }

private:
    static constexpr int START_MS = 20000;

    static std::string record(char command, int id, int host)
    {
        std::string payload(9, command);
        auto* bytes = reinterpret_cast<uint8_t*>(payload.data());
        qd_put_u32(bytes + 1, ntohl(qd_test_host(host)));
        qd_put_u32(bytes + 5, static_cast<uint32_t>(id));
        return payload;
    }

    QD_Temp_Dir dir_;
    std::optional<QD_Process> child_;
    QD_Fd link_;
    bool registered_ = false;
};

/// What a raw window title search needs: a person at the real windows, by xdotool.
class QD_Person {
public:
    explicit QD_Person(const QD_Client_Under_Test& client) : client_(client) {}

    /// Finds the window whose title begins so and keeps to it. Returns whether it came.
    bool look_at(const std::string& title)
    {
        const std::string found = client_.file("window");
        return qd_wait_for(
            [&] {
                unlink(found.c_str());
                QD_Process::Set_Up out;
                out.out = found;
                out.errors = "/dev/null";
                qd_run({"xdotool", "search", "--onlyvisible", "--pid",
                           std::to_string(client_.pid()), "--name", "^" + title},
                    out);
                window_ = qd_read_file(found);
                window_ = window_.substr(0, window_.find('\n'));
                return !window_.empty();
            },
            std::chrono::seconds(20));
    }

    /// Clicks at a place of the window.
    int click(int x, int y) const
    {
        return qd_run({"xdotool", "mousemove", "--window", window_, std::to_string(x),
            std::to_string(y), "click", "1"});
    }

    int press(const std::string& keys) const
    {
        return qd_run({"xdotool", "windowfocus", "--sync", window_, "key", keys});
    }

    /// Asks the window manager's way for the window to be closed.
    int close() const { return qd_run({"xdotool", "windowquit", window_}); }

private:
    const QD_Client_Under_Test& client_;
    std::string window_;
};
