// What a process holds, sampled over time.
#pragma once

#include <array>
#include <map>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

/// Looks at processes every second, from a thread of its own, and compares the rounds.
class QD_Figures {
public:
    enum Kind { MEMORY, DESCRIPTORS, THREADS, KINDS };

    QD_Figures();
    ~QD_Figures();

    /// A process that is there until the end.
    void watch(const std::string& name, pid_t pid);

    /// What is seen from here on belongs to this round.
    void begin(int round);

    /// Prints each process, kind by kind: the median over the round `first`, the median over the
    /// round `last`, and the largest of all. `judged` has a bit for each kind that may not have
    /// grown by more than 5 % between the two. Returns 0, 1 if one has or was not seen.
    int report(int first, int last, unsigned judged);

private:
    using Sample = std::array<long, KINDS>; // kilobytes of its own; numbers

    /// By round.
    using History = std::map<int, std::vector<Sample>>;

    struct Process {
        std::string name;
        pid_t pid;
        History history;
    };

    static Sample look(pid_t pid);
    static long median(const History& history, int round, size_t kind);
    static int print(const Process& process, size_t kind, int first, int last, bool judged);
    void look_every_second(const std::stop_token& stop);

    std::mutex mutex_;
    std::vector<Process> processes_;
    int round_ = 0;
    std::jthread looker_; // goes first
};
