// Sound files in tests.
#pragma once

#include <sndfile.h>
#include <string>
#include <vector>

/// All samples of a mono file, none if it cannot be read.
inline std::vector<short> qd_read_wav(const std::string& path)
{
    SF_INFO info {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr)
        return {};
    std::vector<short> samples(static_cast<size_t>(info.frames));
    sf_read_short(file, samples.data(), info.frames);
    sf_close(file);
    return samples;
}

/// Writes 16-bit mono sound at 8000 Hz. Returns whether all of it was written.
inline bool qd_write_wav(const std::string& path, const std::vector<short>& samples)
{
    SF_INFO info {};
    info.samplerate = 8000;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (file == nullptr)
        return false;
    const auto count = static_cast<sf_count_t>(samples.size());
    const bool written = sf_write_short(file, samples.data(), count) == count;
    return sf_close(file) == 0 && written;
}
