// Sound files in tests.
#pragma once

#include <sndfile.h>
#include <string>
#include <vector>

/// All samples of a 16-bit mono WAV file at 8000 Hz, none if it is anything else.
inline std::vector<short> qd_read_wav(const std::string& path)
{
    SF_INFO info {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr)
        return {};
    std::vector<short> samples(static_cast<size_t>(info.frames));
    sf_read_short(file, samples.data(), info.frames);
    sf_close(file);
    const bool ours = info.samplerate == 8000 && info.channels == 1
        && info.format == (SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    return ours ? samples : std::vector<short>();
}

/// Writes 16-bit sound.
inline void qd_write_wav(
    const std::string& path, const std::vector<short>& samples, int channels = 1)
{
    SF_INFO info {0, 8000, channels, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 0, 0};
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    sf_write_short(file, samples.data(), static_cast<sf_count_t>(samples.size()));
    sf_close(file);
}
