// The microphone port, and the microphone's settings.
#pragma once

#include "platform/al/al.h"

#include <cstdint>

/// 16-bit mono at 8000 Hz behind a queue of 1600 samples (200 ms).
///
/// The port is used by one thread. The settings may be changed from any thread,
/// also while the port is open.
class QD_AudioCapture {
public:
    /// Sets the rate to 8000 Hz.
    static void init();

    // Always 0, whatever the device makes of it.
    static int set_rate(long rate);
    static int set_gain(long g); // an attenuation: 0 full .. 255 silent, both channels

    /// The mean of both channels' attenuation, cut to an integer.
    static int get_gain();

    /// Opens the port. Returns 0, or -1 with a line on standard error that says
    /// which setting failed (none if it is the port itself).
    int open();

    /// Closes the port if it is open.
    void close();

    /// Waits until `n` samples have been captured, in host byte order: 100 ms
    /// for 800 of them, silence if the device has stopped. Returns 0, at once
    /// and with `buf` untouched if the port is not open.
    int capture(int16_t* buf, int n);

    ALport port = nullptr;   // null when not open
    ALconfig conf = nullptr; // what `port` was opened with, released by close()
};
