// What processes use.
#pragma once

#include <fstream>
#include <string>
#include <unistd.h>

/// Processor time of a process up to now, of all its threads; to a clock tick (10 ms).
inline double qd_cpu_seconds(pid_t pid)
{
    std::ifstream stat("/proc/" + std::to_string(pid) + "/stat");
    std::string word;
    double ticks = 0;
    for (int field = 1; field <= 15 && stat >> word; ++field)
        ticks += field >= 14 ? std::stod(word) : 0;
    return ticks / static_cast<double>(sysconf(_SC_CLK_TCK));
}
