// One loudspeaker port, and the loudspeaker's settings.
#pragma once

#include "platform/al/al.h"

#include <cstdint>

/// What one sender says is played through one of these; the device mixes them.
/// 16-bit mono at 8000 Hz behind a queue of 1600 samples (200 ms).
///
/// A port is used by one thread. The settings hold for all ports and may be
/// changed from any thread, also while ports are open.
class QD_AudioPlay {
public:
    /// Sets the rate to 8000 Hz.
    static void init();

    // Always 0, whatever the device makes of it.
    static int set_rate(long rate);
    static int set_volume(long v); // 0 silent .. 255 full, both channels

    /// The mean of both channels' gain, cut to an integer.
    static int get_volume();

    /// Opens the port. Returns 0, or -1 with a line on standard error that says
    /// which setting failed (none if it is the port itself). `stream` is above 0
    /// and the same for all that one sender says, 0 for none; see qd_al_set_stream().
    int open(long stream = 0);

    /// Closes the port if it is open.
    void close();

    /// Plays `n` samples in host byte order. Never waits: in a full queue they
    /// take the place of the oldest. Returns 0.
    int play(const int16_t* buf, int n);

    ALport port = nullptr;   // null when not open
    ALconfig conf = nullptr; // what `port` was opened with, released by close()
};
