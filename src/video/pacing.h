// The pause between two pictures, by what has been sent of late.
#pragma once

/// Stretches and shrinks the pause by tenths until the frame rate is at its
/// limit or the bit rate between 0.8 of its limit and the limit. Plain
/// arithmetic, no lock: the capture thread owns it.
class QD_Pacing {
public:
    static constexpr double FIRST_WAIT_MS = 10.0;
    static constexpr double SHORTEST_WAIT_MS = 1.0;

    /// Takes what was sent, kbit/s and pictures/s, after each picture, and the
    /// limits. Returns the pause in milliseconds; it has no upper bound.
    double adapt(double kbps, double fps, double kbps_limit, int fps_max)
    {
        if (fps_max < fps) {
            wait_time_ *= 1.1;
        } else {
            if (kbps_limit < kbps)
                wait_time_ *= 1.1;
            if (kbps < 0.8 * kbps_limit)
                wait_time_ *= 0.9;
        }
        if (wait_time_ < SHORTEST_WAIT_MS)
            wait_time_ = SHORTEST_WAIT_MS;
        return wait_time_;
    }

private:
    double wait_time_ = FIRST_WAIT_MS;
};
