// A real MQTT broker of the test's own.
#pragma once

#include "tests/support/loopback.h"
#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

#include <functional>

/// A port on this machine that is free now.
inline int qd_free_port()
{
    return qd_bind_somewhere(QD_Fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)).get());
}

/// Runs until it is stopped or goes; it can be started again at the same place.
class QD_Test_Broker {
public:
    using At = std::function<std::vector<std::string>(std::vector<std::string>)>;

    /// `settings` are lines of mosquitto.conf beside "listener PORT ADDRESS". `at`
    /// makes the command one that runs elsewhere.
    explicit QD_Test_Broker(const std::string& settings = "allow_anonymous true\n",
        const std::string& address = "127.0.0.1", At at = nullptr) :
        at_(std::move(at)),
        port_(at_ ? 1883 : qd_free_port()),
        place_(address + ":" + std::to_string(port_))
    {
        qd_write_file(dir_ / "conf",
            "user root\nlistener " + std::to_string(port_) + " " + address + "\n" + settings);
        start();
    }

    /// Whether it runs, soon.
    bool start()
    {
        std::vector<std::string> command {"mosquitto", "-c", dir_ / "conf"};
        process_.reset();
        unlink(log().c_str());
        process_.emplace(at_ ? at_(command) : command, QD_Surroundings {.out = log()});
        return qd_wait_for(
            [&] { return qd_read_file(log()).find(" running") != std::string::npos; });
    }
    void stop(int signal) { process_->end(signal); }
    void send(int signal) const { ::kill(process_->pid(), signal); }
    pid_t pid() const { return process_->pid(); }

    /// "HOST:PORT"
    const std::string& place() const { return place_; }
    std::string port() const { return std::to_string(port_); }
    std::string log() const { return dir_ / "log"; }
    const QD_Temp_Dir& dir() const { return dir_; }

private:
    const QD_Temp_Dir dir_;
    const At at_;
    const int port_;
    const std::string place_;
    std::optional<QD_Process> process_;
};
