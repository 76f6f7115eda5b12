// Sound files: mono, 16 bits signed, 8000 samples a second.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

constexpr int QD_SOUND_RATE = 8000;

/// Reads a file of this kind, at most an hour. Returns 0, -1 if it cannot be
/// had or is of another kind; `samples` is unchanged then.
int qd_read_wav(const std::string& path, std::vector<int16_t>& samples);

/// Writes a file anew. Returns 0, -1 if it cannot be written.
int qd_write_wav(const std::string& path, std::span<const int16_t> samples);
