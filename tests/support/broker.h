// A real MQTT broker of the test's own.
#pragma once

#include "tests/support/loopback.h"
#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

/// A port on this machine that is free now.
inline int qd_free_port()
{
    return qd_bind_somewhere(QD_Fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)).get());
}

/// Runs until it is stopped or goes; it can be started again at the same place.
class QD_Test_Broker {
public:
    /// `settings` are lines of mosquitto.conf beside "listener PORT ADDRESS". `at`
    /// is what runs the command that follows it elsewhere.
    explicit QD_Test_Broker(const std::string& settings = "allow_anonymous true\n",
        const std::string& address = "127.0.0.1", std::vector<std::string> at = {}) :
        command_(std::move(at))
    {
        const std::string port = command_.empty() ? std::to_string(qd_free_port()) : "1883";
        place_ = address + ":" + port;
        qd_write_file(
            dir_ / "conf", "user root\nlistener " + port + " " + address + "\n" + settings);
        command_.insert(command_.end(), {"mosquitto", "-c", dir_ / "conf"});
        start();
    }

    /// Whether it runs, soon.
    bool start()
    {
        const std::string log = dir_ / "log";
        unlink(log.c_str());
        process_.emplace(command_, QD_Surroundings {.out = log});
        return qd_wait_for([&] { return qd_read_file(log).find(" running") != std::string::npos; });
    }
    void stop(int signal) { process_->end(signal); }
    pid_t pid() const { return process_->pid(); }

    /// "HOST:PORT"
    const std::string& place() const { return place_; }

private:
    const QD_Temp_Dir dir_;
    std::vector<std::string> command_;
    std::string place_;
    std::optional<QD_Process> process_;
};
