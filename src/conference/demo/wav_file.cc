#include "conference/demo/wav_file.h"

#include <algorithm>
#include <memory>
#include <sndfile.h>

namespace {

constexpr sf_count_t MAX_SAMPLES = 3600L * QD_SOUND_RATE;

using Sound_File = std::unique_ptr<SNDFILE, int (*)(SNDFILE*)>;

}

int qd_read_wav(const std::string& path, std::vector<int16_t>& samples)
{
    SF_INFO info {};
    const Sound_File file(sf_open(path.c_str(), SFM_READ, &info), sf_close);
    if (!file || info.channels != 1 || info.samplerate != QD_SOUND_RATE
        || (info.format & SF_FORMAT_SUBMASK) != SF_FORMAT_PCM_16)
        return -1;
    std::vector<int16_t> read(
        static_cast<size_t>(std::clamp<sf_count_t>(info.frames, 0, MAX_SAMPLES)));
    const sf_count_t got
        = sf_read_short(file.get(), read.data(), static_cast<sf_count_t>(read.size()));
    if (got < 0)
        return -1;
    read.resize(static_cast<size_t>(got));
    samples = std::move(read);
    return 0;
}

int qd_write_wav(const std::string& path, std::span<const int16_t> samples)
{
    SF_INFO info {};
    info.channels = 1;
    info.samplerate = QD_SOUND_RATE;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    const Sound_File file(sf_open(path.c_str(), SFM_WRITE, &info), sf_close);
    const auto count = static_cast<sf_count_t>(samples.size());
    return file && sf_write_short(file.get(), samples.data(), count) == count ? 0 : -1;
}
