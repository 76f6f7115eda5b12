// Time that only goes forward, and a way to hand tests a clock of their own.
#pragma once

#include "platform/base/wake.h"

#include <algorithm>
#include <chrono>

/// Where a part takes its time from, and what it waits by. Any thread.
class QD_Clock {
public:
    using Time = std::chrono::steady_clock::time_point;

    virtual ~QD_Clock() = default;
    virtual Time now() const { return std::chrono::steady_clock::now(); }

    /// Waits for a raise of `wake`, at most until `until`. Returns whether there
    /// is one, which stays to be taken.
    virtual bool wait(const QD_Wake& wake, Time until) const
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - now()).count();
        return wake.wait(static_cast<int>(std::clamp<long>(left, 0, 60'000)));
    }

    /// The machine's own clock, shared by all, and never destroyed: threads may
    /// still read it while the process ends.
    static const QD_Clock& real()
    {
        static const auto* const clock = new QD_Clock;
        return *clock;
    }
};
