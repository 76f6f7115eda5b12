// How coarsely to code the next picture, so that the link is filled and not flooded.
#pragma once

#include <array>
#include <cstddef>

/// Plain arithmetic, no lock: whoever codes owns one. The sender's pacing only
/// stretches the gaps between pictures; this decides what one picture costs.
class QD_Quantiser {
public:
    static constexpr double FINEST = 2;
    static constexpr double COARSEST = 28;
    static constexpr double FIRST_KBPS = 20;
    static constexpr int FIRST_FPS = 5;

    /// For `kbps` kbit/s (above 0) in `fps` pictures a second (1..30).
    explicit QD_Quantiser(double kbps = FIRST_KBPS, int fps = FIRST_FPS);

    /// The quantiser for the next picture, FINEST..COARSEST.
    double get() const { return q_; }

    /// The bytes that a picture is to have in the long run.
    double get_target() const { return target_; }

    /// The bytes that no single picture should exceed: a longer one would hold
    /// the link up for too long.
    int get_cap() const { return cap_; }

    /// Counts a coded picture of `size` bytes.
    void coded(int size);

private:
    static constexpr size_t PERIOD = 10; // from one intra picture to the next

    double q_ = 0;
    double target_ = 0;
    int cap_ = 0;
    std::array<int, PERIOD> sizes_ {}; // the last ones, a ring
    size_t count_ = 0;
};
