// Audio devices that need no sound card: silence, a tone, WAV files.
#pragma once

#include "platform/al/device.h"
#include "platform/base/clock.h"
#include "platform/base/mutex.h"
#include "platform/base/thread.h"

#include <functional>
#include <map>
#include <memory>
#include <sndfile.h>
#include <span>
#include <string>
#include <vector>

/// A device that moves one block every 10 ms by the clock.
///
/// advance() is the device; a thread that calls it comes with
/// run_in_background(). Whoever drives advance() is "the device thread".
class QD_Headless : public QD_Al_Device {
public:
    static constexpr std::chrono::milliseconds BEAT {10};
    static constexpr size_t BLOCK = 80; // samples in 10 ms

    /// More beats than this behind its time, and it goes on from now instead of
    /// making up for them.
    static constexpr long CATCH_UP = 4;

    QD_Headless();
    ~QD_Headless() override;

    void attach(std::shared_ptr<QD_Al_Port> port) override QD_EXCLUDES(mutex_);
    void nudge() override {}

    /// Moves the block that is due at `now`, if one is. Returns when to call
    /// again: the next beat's time, which may have passed already.
    QD_Clock::Time advance(QD_Clock::Time now) QD_EXCLUDES(mutex_);

    /// Drives advance() by the machine's clock until end_thread(). Returns 0, -1 if
    /// there can be no thread.
    int run_in_background();

protected:
    /// Derived classes call it first in their destructors.
    void end_thread();

    // On the device thread:
    virtual void opened(std::shared_ptr<QD_Al_Port> port) = 0;
    virtual void move_block() = 0;
    /// So many beats will not be made up for.
    virtual void skipped(long /*beats*/) {}
    /// Whether there is anything to do before the next attach().
    virtual bool idle() const = 0;

    /// Hands the ports that came since the last call to opened().
    void take_arrivals() QD_EXCLUDES(mutex_);

private:
    class Beater;

    QD_Mutex mutex_;
    std::vector<std::shared_ptr<QD_Al_Port>> arrivals_ QD_GUARDED_BY(mutex_);
    QD_Clock::Time next_ {}; // the next beat; zero while idle
    std::unique_ptr<Beater> beater_;
};

/// A microphone that hears what `source` fills the blocks with.
class QD_Synthetic_Mic : public QD_Headless {
public:
    using Source = std::function<void(std::span<int16_t>)>;

    explicit QD_Synthetic_Mic(Source source) : source_(std::move(source)) {}
    ~QD_Synthetic_Mic() override { end_thread(); }

protected:
    void opened(std::shared_ptr<QD_Al_Port> port) override { ports_.push_back(std::move(port)); }
    void move_block() override;
    bool idle() const override { return ports_.empty(); }

private:
    Source source_;
    std::vector<std::shared_ptr<QD_Al_Port>> ports_;
};

/// A loudspeaker that writes WAV files (8000 Hz, mono, 16 bits) to a directory:
/// port-1.wav, port-2.wav... one for each port in order of opening, with the
/// samples played and nothing else; and mix.wav, what a listener hears from the
/// first opening on: the saturated sum, and silence where nothing plays. The
/// headers are brought up to date every second and at the end.
/// A port that carries on the stream of one before it (see qd_al_set_stream)
/// adds to the file of that one; beyond MOST_FILES ports are heard in mix.wav
/// only. New files are the user's alone.
class QD_File_Speaker : public QD_Headless {
public:
    static constexpr int MOST_FILES = 1000;

    explicit QD_File_Speaker(std::string directory) : directory_(std::move(directory)) {}
    ~QD_File_Speaker() override;

protected:
    void opened(std::shared_ptr<QD_Al_Port> port) override;
    void move_block() override;
    void skipped(long beats) override;
    bool idle() const override { return !begun_; }

private:
    struct Close {
        void operator()(SNDFILE* file) const { sf_close(file); }
    };
    using File = std::unique_ptr<SNDFILE, Close>;
    struct Track {
        std::shared_ptr<QD_Al_Port> port;
        File file;
    };
    enum Begin { AT_START, AT_END };
    File open(const std::string& name, Begin begin);
    File open_track(long stream);
    void append(const File& file, std::span<const int16_t> samples);

    const std::string directory_;
    std::vector<Track> tracks_;
    File mix_;
    int files_ = 0;               // port-<n>.wav so far
    std::map<long, int> numbers_; // n of each stream
    long beats_ = 0;
    bool begun_ = false; // some port was opened
    bool told_ = false;  // that a file cannot be written
};

/// Sources for QD_Synthetic_Mic: a sine of half the full scale; a sound file,
/// from its end again from its beginning. The latter is null, with the reason
/// in `why`, if the file is not 8000 Hz mono sound.
QD_Synthetic_Mic::Source qd_tone_source(double hertz);
QD_Synthetic_Mic::Source qd_file_source(const std::string& path, std::string& why);

// Rows of the tables of devices. No device: what is written is gone, and what
// is read is silence at the pace of the clock.
std::shared_ptr<QD_Al_Device> qd_make_no_device(const std::string& argument, std::string& why);
std::shared_ptr<QD_Al_Device> qd_make_tone_mic(const std::string& argument, std::string& why);
std::shared_ptr<QD_Al_Device> qd_make_file_mic(const std::string& argument, std::string& why);
std::shared_ptr<QD_Al_Device> qd_make_file_speaker(const std::string& argument, std::string& why);
