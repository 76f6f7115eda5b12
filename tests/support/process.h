// A child process that cannot outlive the test.
#pragma once

#include "tests/support/wait.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

/// Killed when this object or the test goes.
class QD_Process {
public:
    struct Set_Up {
        std::string out {};       // file for standard output, "" for ours
        std::string errors {};    // file for standard error, "" for ours, "&1" for that of `out`
        std::string directory {}; // current directory, "" for ours
        std::map<std::string, std::string> environment {}; // beside or instead of ours
        bool in_pipe = false;                              // standard input is what tell() writes
    };

    explicit QD_Process(const std::vector<std::string>& command) : QD_Process(command, Set_Up()) {}
    QD_Process(const std::vector<std::string>& command, const Set_Up& set_up)
    {
        std::vector<char*> args;
        for (const std::string& word : command)
            args.push_back(const_cast<char*>(word.c_str()));
        args.push_back(nullptr);
        int in[2] = {-1, -1};
        if (set_up.in_pipe && ::pipe2(in, O_CLOEXEC) != 0)
            return;
        const pid_t parent = getpid();
        pid_ = fork();
        if (pid_ == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            if (getppid() == parent)
                become(args.data(), set_up, in[0]);
            _exit(127);
        }
        ::close(in[0]);
        in_ = in[1];
    }
    ~QD_Process()
    {
        end(SIGKILL);
        ::close(in_);
    }
    QD_Process(const QD_Process&) = delete;
    QD_Process& operator=(const QD_Process&) = delete;

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
        if (!qd_wait_for([&] { return waitpid(pid_, &status, WNOHANG) == pid_; }, bound))
            return std::nullopt;
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    /// Sends the signal (0: none) and waits for the end. Returns the exit status, -1 if killed.
    int end(int signal)
    {
        if (pid_ <= 0 || kill(pid_, signal) != 0)
            return -1;
        return wait(std::chrono::hours(1)).value_or(-1);
    }

private:
    static void redirect(const std::string& file, int fd)
    {
        if (!file.empty())
            dup2(open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600), fd);
    }

    static void become(char** args, const Set_Up& set_up, int in)
    {
        redirect(set_up.out, STDOUT_FILENO);
        if (set_up.errors == "&1")
            dup2(STDOUT_FILENO, STDERR_FILENO);
        else
            redirect(set_up.errors, STDERR_FILENO);
        if (in >= 0)
            dup2(in, STDIN_FILENO);
        if (!set_up.directory.empty() && chdir(set_up.directory.c_str()) != 0)
            return;
        for (const auto& [name, value] : set_up.environment)
            setenv(name.c_str(), value.c_str(), 1);
        execvp(args[0], args);
    }

    pid_t pid_ = -1;
    int in_ = -1;
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
inline int qd_run(const std::vector<std::string>& command, const QD_Process::Set_Up& set_up = {})
{
    return QD_Process(command, set_up).end(0);
}

/// Memory that a process has in use now.
inline size_t qd_resident_kilobytes(pid_t pid)
{
    std::ifstream statm("/proc/" + std::to_string(pid) + "/statm");
    size_t pages = 0;
    statm >> pages >> pages;
    return pages * 4;
}
