#include "tests/soak/figures.h"

#include <algorithm>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

constexpr std::array<const char*, QD_Figures::KINDS> KIND_NAMES
    = {"own memory, kB", "descriptors", "threads"};
constexpr double MOST_GROWTH = 1.05;

long entries(const std::string& directory)
{
    std::error_code gone;
    return std::distance(std::filesystem::directory_iterator(directory, gone), {});
}

/// Pages that are no file's, whether shared memory is or not: what was allocated and touched.
long own_kilobytes(const std::string& process)
{
    std::ifstream rollup(process + "/smaps_rollup");
    for (std::string line; std::getline(rollup, line);)
        if (line.starts_with("Anonymous:"))
            return std::stol(line.substr(10));
    return 0;
}

}

QD_Figures::QD_Figures() : looker_([this](const std::stop_token& stop) { look_every_second(stop); })
{
}

QD_Figures::~QD_Figures() = default;

void QD_Figures::watch(const std::string& name, pid_t pid)
{
    const std::lock_guard hold(mutex_);
    processes_.push_back({name, pid, {}});
}

void QD_Figures::begin(int round)
{
    const std::lock_guard hold(mutex_);
    round_ = round;
}

QD_Figures::Sample QD_Figures::look(pid_t pid)
{
    const std::string process = "/proc/" + std::to_string(pid);
    return {own_kilobytes(process), entries(process + "/fd"), entries(process + "/task")};
}

void QD_Figures::look_every_second(const std::stop_token& stop)
{
    std::condition_variable_any never;
    std::unique_lock hold(mutex_);
    while (!stop.stop_requested()) {
        for (Process& process : processes_)
            process.history[round_].push_back(look(process.pid));
        never.wait_for(hold, stop, std::chrono::seconds(1), [] { return false; });
    }
}

long QD_Figures::median(const History& history, int round, size_t kind)
{
    const auto found = history.find(round);
    if (found == history.end())
        return 0;
    std::vector<long> values;
    for (const Sample& sample : found->second)
        values.push_back(sample[kind]);
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

int QD_Figures::print(const Process& process, size_t kind, int first, int last, bool judged)
{
    long largest = 0;
    for (const auto& [round, samples] : process.history)
        for (const Sample& sample : samples)
            largest = std::max(largest, sample[kind]);
    const long before = median(process.history, first, kind);
    const long after = median(process.history, last, kind);
    const bool missed = judged
        && (before <= 0 || static_cast<double>(after) > static_cast<double>(before) * MOST_GROWTH);
    printf("%-24s %-16s %8ld %8ld %8ld %+7.1f %%%s\n", process.name.c_str(), KIND_NAMES.at(kind),
        before, after, largest,
        before > 0 ? 100.0 * static_cast<double>(after - before) / static_cast<double>(before) : 0,
        missed ? "  MISSED" : "");
    return missed ? 1 : 0;
}

int QD_Figures::report(int first, int last, unsigned judged)
{
    const std::lock_guard hold(mutex_);
    printf("%-24s %-16s %8s %8s %8s %9s\n", "process", "median of a round", "first", "last",
        "largest", "growth");
    int missed = processes_.empty() ? 1 : 0;
    for (size_t kind = 0; kind < KINDS; ++kind)
        for (const Process& process : processes_)
            missed |= print(process, kind, first, last, (judged & 1U << kind) != 0);
    return missed;
}
