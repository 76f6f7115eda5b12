// One member's companion, with the test at its keyboard.
#pragma once

#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

class QD_Seat {
public:
    explicit QD_Seat(const std::string& address) : address_(address) {}

    /// Runs the companion by this command.
    void start(const std::vector<std::string>& command,
        const std::map<std::string, std::string>& environment)
    {
        process_.emplace(
            command, QD_Surroundings {.out = file("said"), .environment = environment});
    }

    /// Of its directory.
    std::string file(const std::string& name) const { return dir_ / name; }
    const std::string& address() const { return address_; }

    std::string said() const { return qd_read_file(file("said")); }
    bool says(const std::string& text) const
    {
        return qd_wait_for(
            [&] { return said().find(text) != std::string::npos; }, std::chrono::seconds(30));
    }

    QD_Process& process() { return *process_; }

    /// Its exit status, nothing if it does not end.
    std::optional<int> end()
    {
        process_->tell("end\n");
        return process_->wait(std::chrono::seconds(20));
    }

private:
    const QD_Temp_Dir dir_;
    const std::string address_;
    std::optional<QD_Process> process_;
};
