// Waiting for what another thread or process is about to do.
#pragma once

#include <chrono>
#include <thread>

/// Whether `condition` comes true within the bound; looks every millisecond.
template <class Condition>
bool qd_wait_for(Condition condition, std::chrono::milliseconds bound = std::chrono::seconds(10))
{
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

/// A time that is promised to users, as it can be held here: a sanitizer takes its own.
inline std::chrono::milliseconds qd_promised(std::chrono::milliseconds time)
{
    return *QD_SANITIZED != '\0' ? 3 * time : time;
}
