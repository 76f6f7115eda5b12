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
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}
