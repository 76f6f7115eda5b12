// Comparing sound that has been through a device.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numbers>
#include <random>
#include <span>
#include <vector>

/// Three seconds of speech-like noise: bursts of changing loudness, never silent for a whole frame.
inline std::vector<int16_t> qd_noise(unsigned seed)
{
    std::mt19937 random(seed);
    std::vector<int16_t> samples;
    double value = 0;
    for (int i = 0; i < 8000 * 3; ++i) {
        value = 0.9 * value + static_cast<double>(random() % 2000) - 1000;
        const double loudness = 1.5 + std::sin(i / 900.0);
        samples.push_back(static_cast<int16_t>(value * loudness));
    }
    return samples;
}

/// Whether `part` stands in `whole` sample for sample.
inline bool qd_contains(std::span<const int16_t> whole, std::span<const int16_t> part)
{
    return std::search(whole.begin(), whole.end(), part.begin(), part.end()) != whole.end();
}

/// The amplitude of one frequency in the samples (a single bin of a Fourier transform).
inline double qd_amplitude(std::span<const int16_t> samples, double hertz)
{
    double re = 0;
    double im = 0;
    for (size_t i = 0; i < samples.size(); ++i) {
        const double turn = 2 * std::numbers::pi * hertz * static_cast<double>(i) / 8000;
        re += samples[i] * std::cos(turn);
        im += samples[i] * std::sin(turn);
    }
    return 2 * std::hypot(re, im) / static_cast<double>(std::max<size_t>(samples.size(), 1));
}
