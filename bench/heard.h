// What one client says and another hears: how much of it, and how much later.
#pragma once

#include "tests/support/wav.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sys/types.h>

/// A sound in which every sample of 16 bits comes once, so that one tells its
/// place; looped, it goes on in the same way.
class QD_Counted_Voice {
public:
    static constexpr int LENGTH = 65536; // 8.2 s

    QD_Counted_Voice() : samples_(LENGTH), places_(LENGTH)
    {
        short sample = 1;
        for (int place = 0; place < LENGTH; ++place) {
            samples_[static_cast<size_t>(place)] = sample;
            places_[static_cast<uint16_t>(sample)] = place;
            sample = next(sample);
        }
    }

    const std::vector<short>& samples() const { return samples_; }
    int place(short sample) const { return places_[static_cast<uint16_t>(sample)]; }

    /// What follows it, by a generator of full period.
    static short next(short sample)
    {
        return static_cast<short>(static_cast<uint16_t>(sample) * 29285U + 13849U);
    }

private:
    std::vector<short> samples_;
    std::vector<int> places_;
};

/// Follows a client whose microphone is the file of a counted voice, and the
/// mix.wav of a client that hears it. Both files move with the devices, ten
/// milliseconds at a time: how far the one is read and the other written is what
/// was said and heard up to now. The codec has to be PCM, which changes no sample.
class QD_Hearing {
public:
    using Clock = std::chrono::steady_clock;

    /// Of the moment of a note(), in samples since the first.
    struct Note {
        Clock::time_point when;
        long said;
        long heard;
    };

    /// What was said between two notes, and how it was heard.
    struct Report {
        double right = 0;  // the share heard, in order and once
        double gap_ms = 0; // the longest time nothing was, up to two seconds afterwards
        std::vector<double> delays_ms {}; // from one to two seconds afterwards, sorted
    };

    /// A block of ten milliseconds that was heard.
    struct Passage {
        long sample; // its first, as notes count what is said
        int place;   // of that sample in the voice
        Clock::time_point heard;
    };

    QD_Hearing(pid_t speaker, std::string voice, std::string mix) :
        speaker_(speaker),
        voice_(std::move(voice)),
        mix_(std::move(mix))
    {
    }

    /// To be called every 20 ms or so, and at least every 8 s. Returns whether both devices run.
    bool note()
    {
        const std::optional<long> said = said_so_far();
        std::error_code error;
        const auto bytes = static_cast<long>(std::filesystem::file_size(mix_, error));
        if (!said || error || bytes <= HEADER)
            return false;
        const long last = notes_.empty() ? 0 : notes_.back().said;
        const long step = (*said - last % QD_Counted_Voice::LENGTH + QD_Counted_Voice::LENGTH)
            % QD_Counted_Voice::LENGTH;
        notes_.push_back({Clock::now(), last + step, (bytes - HEADER) / 2});
        return true;
    }

    /// The newest.
    size_t noted() const { return notes_.size() - 1; }

    /// Between the notes `first` and `last`; notes go on for two seconds at least.
    Report report(size_t first, size_t last) const
    {
        using std::chrono::seconds;
        const Note& begin = notes_[first];
        const Note& end = notes_[last];
        const long second = note_at(end.when + seconds(1)).heard;
        const long third = note_at(end.when + seconds(2)).heard;
        Report report;
        const std::vector<short> mix = read_mix();
        long newest = 0; // said
        long right = 0;
        long silent_from = begin.heard;
        double gap = 0;
        for (long at = std::max(1L, begin.heard - LEAD); at < third; ++at) {
            const std::optional<long> place = said_at(mix, at);
            if (!place || *place <= newest)
                continue;
            newest = *place;
            right += newest >= begin.said && newest < end.said;
            if (at >= begin.heard) {
                gap = std::max(gap, static_cast<double>(at - silent_from));
                silent_from = at + 1;
            }
            if (at >= second)
                report.delays_ms.push_back(static_cast<double>(said_when(at) - newest) / 8);
        }
        report.gap_ms = std::max(gap, static_cast<double>(third - silent_from)) / 8;
        report.right = static_cast<double>(right) / static_cast<double>(end.said - begin.said);
        std::sort(report.delays_ms.begin(), report.delays_ms.end());
        return report;
    }

    /// What was said and heard since the first note, each block at the note that first saw it.
    std::vector<Passage> passages() const
    {
        const std::vector<short> mix = read_mix();
        std::vector<Passage> passages;
        for (size_t i = 1; i < notes_.size(); ++i) {
            const long at = notes_[i - 1].heard;
            const std::optional<long> said = notes_[i].heard > at ? said_at(mix, at) : std::nullopt;
            if (said && *said >= notes_.front().said)
                passages.push_back(
                    {*said, counted_.place(mix[static_cast<size_t>(at)]), notes_[i].when});
        }
        return passages;
    }

    /// The note that first saw the sample said.
    Clock::time_point when_said(long sample) const
    {
        const auto found = std::upper_bound(notes_.begin(), notes_.end(), sample,
            [](long at, const Note& note) { return at < note.said; });
        return found == notes_.end() ? notes_.back().when : found->when;
    }

private:
    static constexpr long HEADER = 44; // bytes before the samples
    static constexpr long LEAD = 8000; // samples heard before, to know what is new

    // From how far the client has read the file.
    std::optional<long> said_so_far()
    {
        std::string word;
        long position = 0;
        if (std::ifstream(voice_info_) >> word >> position && position >= HEADER)
            return (position - HEADER) / 2 % QD_Counted_Voice::LENGTH;
        find_voice();
        return std::nullopt;
    }

    // What tells of the client's descriptor of the file.
    void find_voice()
    {
        const std::string process = "/proc/" + std::to_string(speaker_);
        std::error_code error;
        for (const auto& fd : std::filesystem::directory_iterator(process + "/fd", error))
            if (std::filesystem::read_symlink(fd, error) == voice_)
                voice_info_ = process + "/fdinfo/" + fd.path().filename().string();
    }

    // The header of the file may be a second old.
    std::vector<short> read_mix() const
    {
        std::ifstream in(mix_, std::ios::binary);
        in.seekg(HEADER);
        std::vector<short> samples(static_cast<size_t>(notes_.back().heard));
        in.read(reinterpret_cast<char*>(samples.data()),
            static_cast<std::streamsize>(samples.size() * sizeof(short)));
        return samples;
    }

    const Note& note_at(Clock::time_point when) const
    {
        const auto found = std::lower_bound(notes_.begin(), notes_.end(), when,
            [](const Note& note, Clock::time_point time) { return note.when < time; });
        return found == notes_.end() ? notes_.back() : *found;
    }

    // What was said by the time this was heard.
    long said_when(long heard) const
    {
        const auto found = std::upper_bound(notes_.begin(), notes_.end(), heard,
            [](long at, const Note& note) { return at < note.heard; });
        const Note& note = found == notes_.end() ? notes_.back() : *found;
        return note.said - (note.heard - heard);
    }

    // When what is heard here was said; nothing if it is silence.
    std::optional<long> said_at(const std::vector<short>& mix, long at) const
    {
        const auto index = static_cast<size_t>(at);
        const short sample = mix[index];
        const bool sound = QD_Counted_Voice::next(mix[index - 1]) == sample
            || (index + 1 < mix.size() && QD_Counted_Voice::next(sample) == mix[index + 1]);
        if (!sound)
            return std::nullopt;
        const long now = said_when(at);
        const long age = (now - counted_.place(sample)) % QD_Counted_Voice::LENGTH;
        return now - (age + QD_Counted_Voice::LENGTH) % QD_Counted_Voice::LENGTH;
    }

    const pid_t speaker_;
    const std::string voice_;
    std::string voice_info_;
    const std::string mix_;
    const QD_Counted_Voice counted_;
    std::vector<Note> notes_;
};
