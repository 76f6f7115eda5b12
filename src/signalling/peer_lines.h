// Lines on standard output that other hosts bring about.
#pragma once

#include "platform/base/clock.h"

#include <cstdint>
#include <map>

/// Prints so many lines a second for each host, counts the rest, and tells
/// their number in one line when the second is over. User-interface thread.
class QD_Peer_Lines {
public:
    static constexpr int LINES_A_SECOND = 64;
    static constexpr size_t MAX_HOSTS = 256; // in a second; all further ones share a count

    /// `clock` outlives this object.
    explicit QD_Peer_Lines(const QD_Clock& clock = QD_Clock::real()) : clock_(clock) {}

    /// Prints a line, with its end, or counts it. `host` in network byte order.
    [[gnu::format(printf, 3, 4)]] void print(uint32_t host, const char* format, ...);

    /// Tells what was left out in seconds that are over. For each pass of the control loop.
    void settle();

private:
    struct Count {
        QD_Clock::Time began;
        int lines = 0;
    };
    bool has_room(uint32_t host);
    static void tell(uint32_t host, int left_out);

    const QD_Clock& clock_;
    std::map<uint32_t, Count> counts_;
};

/// Those of this process.
QD_Peer_Lines& qd_peer_lines();
