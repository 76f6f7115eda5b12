// A child process that cannot outlive the test.
#pragma once

#include "tests/support/wait.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <optional>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

struct QD_Surroundings {
    std::string out {};       // file that all it prints is added to, "" for what we print to
    std::string directory {}; // current directory, "" for ours
    std::map<std::string, std::string> environment {}; // beside or instead of ours
};

/// Killed when this object or the test goes.
class QD_Process {
public:
    explicit QD_Process(
        const std::vector<std::string>& command, const QD_Surroundings& surroundings = {})
    {
        std::vector<std::string> words {"setpriv", "--pdeathsig", "KILL", "env"};
        if (!surroundings.directory.empty())
            words.insert(words.end(), {"-C", surroundings.directory});
        for (const auto& [name, value] : surroundings.environment)
            words.push_back(name + "=" + value);
        words.insert(words.end(), command.begin(), command.end());
        std::vector<char*> args;
        for (std::string& word : words)
            args.push_back(word.data());
        args.push_back(nullptr);

        int in[2] = {-1, -1};
        if (::pipe2(in, O_CLOEXEC) != 0)
            return;
        in_ = in[1];
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_adddup2(&files, in[0], STDIN_FILENO);
        if (!surroundings.out.empty()) {
            posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, surroundings.out.c_str(),
                O_WRONLY | O_CREAT | O_APPEND, 0600);
            posix_spawn_file_actions_adddup2(&files, STDOUT_FILENO, STDERR_FILENO);
        }
        if (posix_spawnp(&pid_, args[0], &files, nullptr, args.data(), environ) != 0)
            pid_ = -1;
        posix_spawn_file_actions_destroy(&files);
        ::close(in[0]);
    }
    ~QD_Process()
    {
        end(SIGKILL);
        ::close(in_);
    }
    QD_Process(QD_Process&&) = delete; // nor copied

    pid_t pid() const { return pid_; }

    /// Writes to its standard input.
    void tell(const std::string& text) const
    {
        [[maybe_unused]] const ssize_t ignored = ::write(in_, text.data(), text.size());
    }

    /// Its exit status if it ends within the bound, -1 if a signal ended it; nothing if it goes on.
    std::optional<int> wait(std::chrono::milliseconds bound)
    {
        int status = 0;
        if (pid_ > 0
            && qd_wait_for([&] { return waitpid(pid_, &status, WNOHANG) == pid_; }, bound)) {
            pid_ = -1;
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        }
        return status_;
    }

    /// Sends the signal (0: none) and waits for the end. Returns the exit status, -1 if killed.
    int end(int signal)
    {
        if (pid_ <= 0 || kill(pid_, signal) != 0)
            return -1;
        return wait(std::chrono::hours(1)).value_or(-1);
    }

private:
    pid_t pid_ = -1;
    int in_ = -1;
    std::optional<int> status_;
};

/// What a shell command prints, its complaints left out.
inline std::string qd_output(const std::string& command)
{
    std::string text;
    FILE* pipe = popen(("{ " + command + "; } 2>/dev/null").c_str(), "r");
    for (int c = 0; pipe != nullptr && (c = fgetc(pipe)) != EOF;)
        text += static_cast<char>(c);
    if (pipe != nullptr)
        pclose(pipe);
    return text;
}

/// Runs a command to its end. Returns its exit status.
inline int qd_run(const std::vector<std::string>& command, const QD_Surroundings& surroundings = {})
{
    return QD_Process(command, surroundings).end(0);
}

/// Memory that a process has in use now.
inline size_t qd_resident_kilobytes(pid_t pid)
{
    std::ifstream statm("/proc/" + std::to_string(pid) + "/statm");
    size_t pages = 0;
    statm >> pages >> pages;
    return pages * 4;
}
