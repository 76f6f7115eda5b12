// Whose voice a recording holds, and how faithfully.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

/// One source: what a member said, over and over.
using QD_Voice = std::vector<int16_t>;

struct QD_Voice_Match {
    int voice = -1;         // index among the voices, -1: silence, or none of them
    double seconds = 0;     // from the first sound to the last, at 8000 samples a second
    double correlation = 0; // -1..1, 1 for an exact copy, of any loudness
};

/// Finds the voice of `heard` among `voices`. The recording may begin and end
/// anywhere in a repeated voice. It is cut into blocks of a quarter of a second;
/// each block is laid where it fits best, so that a missing packet spoils one
/// block and not the rest. The correlation is the mean over all blocks,
/// weighted by their energy.
QD_Voice_Match qd_match_voice(std::span<const int16_t> heard, std::span<const QD_Voice> voices);
