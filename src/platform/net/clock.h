// Time that only goes forward, and a way to hand tests a clock of their own.
#pragma once

#include <chrono>

/// Where a part takes its time from. Any thread.
class QD_Clock {
public:
    using Time = std::chrono::steady_clock::time_point;

    virtual ~QD_Clock() = default;
    virtual Time now() const { return std::chrono::steady_clock::now(); }

    /// The machine's own clock, shared by all.
    static const QD_Clock& real()
    {
        static const QD_Clock clock;
        return clock;
    }
};
