// A clock that goes when it is told to.
#pragma once

#include "platform/base/clock.h"

struct QD_Test_Clock : QD_Clock {
    Time time {std::chrono::hours(1)};
    Time now() const override { return time; }
    void pass(std::chrono::milliseconds span) { time += span; }
};
