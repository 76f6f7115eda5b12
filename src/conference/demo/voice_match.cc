#include "conference/demo/voice_match.h"

#include "conference/demo/wav_file.h"

#include <algorithm>
#include <cmath>

namespace {

using Samples = std::span<const int16_t>;

constexpr size_t BLOCK = QD_SOUND_RATE / 4;
constexpr double NO_VOICE = 0.5; // a voice that fits a block no better than this is another's
constexpr double GOOD = 0.99;    // no need to look for a better place

int64_t product(const int16_t* a, const int16_t* b, size_t count)
{
    int64_t sum = 0;
    for (size_t i = 0; i < count; ++i)
        sum += a[i] * b[i];
    return sum;
}

/// A voice with as much of its own beginning behind it as a block needs, so
/// that a block may lie across the seam.
class Loop {
public:
    explicit Loop(Samples voice) : length_(voice.size()), samples_(voice.begin(), voice.end())
    {
        for (size_t i = 0; length_ > 0 && i < BLOCK; ++i)
            samples_.push_back(voice[i % length_]);
        energy_.push_back(0);
        for (int16_t sample : samples_)
            energy_.push_back(energy_.back() + sample * sample);
    }

    size_t length() const { return length_; }

    /// How well a block fits at `place`, -1..1.
    double fit(Samples block, int64_t block_energy, size_t place) const
    {
        const int64_t energy = energy_[place + block.size()] - energy_[place];
        if (energy == 0 || block_energy == 0)
            return 0;
        return static_cast<double>(product(block.data(), &samples_[place], block.size()))
            / std::sqrt(static_cast<double>(energy) * static_cast<double>(block_energy));
    }

    /// The best fit anywhere, and its place.
    double best(Samples block, int64_t block_energy, size_t& place) const
    {
        double best = -1;
        for (size_t at = 0; at < length_; ++at) {
            const double here = fit(block, block_energy, at);
            if (here > best) {
                best = here;
                place = at;
            }
        }
        return best;
    }

private:
    size_t length_;
    std::vector<int16_t> samples_;
    std::vector<int64_t> energy_; // of all samples before this one
};

/// The block of `heard` with the most energy.
Samples loudest(Samples heard)
{
    Samples found = heard.first(std::min(heard.size(), BLOCK));
    int64_t most = 0;
    for (size_t at = 0; at < heard.size(); at += BLOCK) {
        const Samples block = heard.subspan(at, std::min(BLOCK, heard.size() - at));
        const int64_t energy = product(block.data(), block.data(), block.size());
        if (energy > most) {
            most = energy;
            found = block;
        }
    }
    return found;
}

double correlation(Samples heard, const Loop& loop)
{
    double sum = 0;
    double weight = 0;
    size_t place = 0; // where the next block is expected
    for (size_t at = 0; at < heard.size(); at += BLOCK) {
        const Samples block = heard.subspan(at, std::min(BLOCK, heard.size() - at));
        const int64_t energy = product(block.data(), block.data(), block.size());
        double fit = loop.fit(block, energy, place);
        if (energy > 0 && fit < GOOD)
            fit = loop.best(block, energy, place);
        sum += fit * static_cast<double>(energy);
        weight += static_cast<double>(energy);
        place = (place + block.size()) % loop.length();
    }
    return weight > 0 ? sum / weight : 0;
}

}

QD_Voice_Match qd_match_voice(std::span<const int16_t> heard, std::span<const QD_Voice> voices)
{
    const auto sounds = [](int16_t sample) { return sample != 0; };
    const auto begin = std::find_if(heard.begin(), heard.end(), sounds);
    const auto end = std::find_if(heard.rbegin(), heard.rend(), sounds).base();
    if (begin >= end)
        return {};
    const Samples sound(begin, end);
    const Samples sample = loudest(sound);
    const int64_t energy = product(sample.data(), sample.data(), sample.size());

    QD_Voice_Match match;
    match.seconds = static_cast<double>(sound.size()) / QD_SOUND_RATE;
    double most = NO_VOICE;
    for (size_t i = 0; i < voices.size(); ++i) {
        const Loop loop(voices[i]);
        size_t place = 0;
        const double fit = loop.length() > 0 ? loop.best(sample, energy, place) : 0;
        if (fit > most) {
            most = fit;
            match.voice = static_cast<int>(i);
        }
    }
    if (match.voice >= 0)
        match.correlation = correlation(sound, Loop(voices[static_cast<size_t>(match.voice)]));
    return match;
}
