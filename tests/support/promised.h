// Times that users are promised, as tests can hold them.
#pragma once

#include <chrono>

/// The time itself; a sanitizer takes its own.
inline std::chrono::milliseconds qd_promised(std::chrono::milliseconds time)
{
    return *QD_SANITIZED != '\0' ? 3 * time : time;
}
