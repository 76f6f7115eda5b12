// What the client may cost, and what was measured of it.
#pragma once

#include <cstdio>
#include <string>

/// One line of the table that `make bench` ends with.
struct QD_Budget {
    const char* what;
    double most; // in `unit`
    const char* unit;
};

inline constexpr QD_Budget QD_MEMBER_CPU {"processor per member that only speaks", 0.2, "%"};
inline constexpr QD_Budget QD_MEMBER_MEMORY {"memory per further member", 1, "MB"};
inline constexpr QD_Budget QD_POSTED_TO_DRAWN {"picture posted to picture drawn", 1, "ms"};
inline constexpr QD_Budget QD_INPUT_TO_CALLBACK {"input to callback, 95th percentile", 2, "ms"};
inline constexpr QD_Budget QD_FRAME_TO_ALL {"frame complete to sent to 99 members", 0.5, "ms"};
inline constexpr QD_Budget QD_RECEIVE_LOOP {"datagram in and processed, PCM", 1.3, "x"};
inline constexpr QD_Budget QD_TRACE_LINE {"a line of video.log", 10, "us"};
inline constexpr QD_Budget QD_ENCODE {"encoding a picture", 0.3, "ms"};
inline constexpr QD_Budget QD_DECODE {"decoding a picture", 0.15, "ms"};
inline constexpr QD_Budget QD_ADPCM {"ADPCM coder", 1, "x"};
inline constexpr QD_Budget QD_START {"start to window shown", 0.4, "s"};
inline constexpr QD_Budget QD_IDLE_INTERFACE {"user interface, idle", 0.2, "%"};
inline constexpr QD_Budget QD_IDLE_PROCESS {"whole process, idle", 2, "%"};
inline constexpr QD_Budget QD_SOUND_DELAY {"sound to sound, median", 150, "ms"};
inline constexpr QD_Budget QD_SOUND_DELAY_LATE {"sound to sound, 95th percentile", 200, "ms"};
inline constexpr QD_Budget QD_PICTURE_DELAY {"picture to picture, median", 60, "ms"};
inline constexpr QD_Budget QD_PICTURE_DELAY_LATE {"picture to picture, 95th percentile", 120, "ms"};

/// Prints the line for the table. `measured` is in the budget's unit; `beside` says what a public
/// program needed for the same work, "" where there is none. Returns 0, 1 if the budget is missed.
inline int qd_report(const QD_Budget& budget, double measured, const std::string& beside = "")
{
    const bool missed = !(measured <= budget.most);
    printf("budget: %-44s %8.3f %-2s of %6.2f %-2s%s%s%s\n", budget.what, measured, budget.unit,
        budget.most, budget.unit, beside.empty() ? "" : "; ", beside.c_str(),
        missed ? "  MISSED" : "");
    fflush(stdout);
    return missed;
}
