// A child process that does not outlive us and is noticed when it ends.
#pragma once

#include "platform/base/fd.h"

#include <cstdint>
#include <string>
#include <sys/types.h>
#include <vector>

/// What to start, and in which surroundings.
struct QD_Launch {
    std::string program;                  // a path
    std::vector<std::string> arguments;   // after the program's name
    std::vector<std::string> environment; // "NAME=value", before what we have ourselves
    std::string directory;                // its current directory; exists; "": ours
    std::string log;                      // takes its output, emptied first; "": ours
};

/// One process, in a process group of its own so that a Ctrl-C meant for us
/// does not reach it. It gets SIGTERM from the kernel when we die. One thread
/// starts and owns it, and must be the one that lives as long as the process.
class QD_Child {
public:
    QD_Child() = default;
    /// A log may be as long as that.
    static constexpr int64_t MAX_LOG = 16 << 20;

    /// Kills it if it still runs, with what it has started.
    ~QD_Child();
    QD_Child(const QD_Child&) = delete;
    QD_Child& operator=(const QD_Child&) = delete;

    /// Returns 0, or -1 with errno set if there can be no process; then none runs.
    /// A program that cannot be run ends with status 127 and a line in its log.
    int start(const QD_Launch& launch);

    /// For polling: readable when the process has ended. -1 before and after.
    int get() const { return pidfd_.get(); }
    pid_t pid() const { return pid_; }
    bool runs() const { return pid_ > 0; }

    /// Sends a signal to it and to what it has started itself, if it runs.
    void signal(int number) const;

    /// Empties a log that is longer than MAX_LOG; what is written next begins it.
    void bound_log() const;

    /// Whether the process has ended since it was started. Never waits.
    bool take_end();

    /// After its end: whether it exited with status 0, and the end in words
    /// ("exit status 1", "signal 11 (Segmentation fault)").
    bool ended_well() const;
    std::string how_it_ended() const;

private:
    void kill();

    pid_t pid_ = 0;
    QD_Fd pidfd_;
    std::string log_;
    int status_ = 0; // as wait(2) gives it
};
