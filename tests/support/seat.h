// One member's companion, with the test at its keyboard.
#pragma once

#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

class QD_Seat {
public:
    /// Runs the companion, with a directory of its own. `at` is what runs the command that
    /// follows it elsewhere.
    void start(const std::string& mode, const std::vector<std::string>& arguments,
        const std::map<std::string, std::string>& environment, std::vector<std::string> at = {})
    {
        at.insert(at.end(), {QD_BUILD_DIR "/quendal-conference", mode, "--dir", dir_.path()});
        at.insert(at.end(), arguments.begin(), arguments.end());
        process_.emplace(at, QD_Surroundings {.out = file("said"), .environment = environment});
    }

    /// Of its directory.
    std::string file(const std::string& name) const { return dir_ / name; }

    std::string said() const { return qd_read_file(file("said")); }

    /// Whether it says so before long, once it has said `after`.
    bool says(const std::string& text, const std::string& after = "") const
    {
        const auto has_said = [&] {
            const std::string all = said();
            return all.find(text, all.find(after)) != std::string::npos;
        };
        return qd_wait_for(has_said, std::chrono::seconds(30));
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
    std::optional<QD_Process> process_;
};
