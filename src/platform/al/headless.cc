#include "platform/al/headless.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <numbers>
#include <utility>

/// The thread that drives a device.
class QD_Headless::Beater : public SprocThread {
public:
    explicit Beater(QD_Headless& device) : device_(device) {}

protected:
    int run() override
    {
        const QD_Clock& clock = QD_Clock::real();
        while (running != 0) {
            const auto left = device_.advance(clock.now()) - clock.now();
            const auto ms = std::chrono::ceil<std::chrono::milliseconds>(left).count();
            if (ms > 0)
                pause(static_cast<int>(ms));
        }
        return 0;
    }

private:
    QD_Headless& device_;
};

QD_Headless::QD_Headless() = default;

QD_Headless::~QD_Headless() = default;

int QD_Headless::run_in_background()
{
    beater_ = std::make_unique<Beater>(*this);
    return beater_->start();
}

void QD_Headless::end_thread()
{
    if (beater_)
        beater_->kill();
}

void QD_Headless::attach(std::shared_ptr<QD_Al_Port> port)
{
    {
        QD_Lock hold(mutex_);
        arrivals_.push_back(std::move(port));
    }
    if (beater_)
        beater_->wake();
}

void QD_Headless::take_arrivals()
{
    std::vector<std::shared_ptr<QD_Al_Port>> arrivals;
    {
        QD_Lock hold(mutex_);
        arrivals.swap(arrivals_);
    }
    for (auto& port : arrivals)
        opened(std::move(port));
}

QD_Clock::Time QD_Headless::advance(QD_Clock::Time now)
{
    take_arrivals();
    if (idle()) {
        next_ = {};
        return now + std::chrono::seconds(1); // attach() ends the wait
    }
    if (next_ == QD_Clock::Time {})
        next_ = now + BEAT;
    if (now < next_)
        return next_;

    const long late = static_cast<long>((now - next_) / BEAT);
    if (late > CATCH_UP) {
        skipped(late);
        next_ += late * BEAT;
    }
    move_block();
    next_ += BEAT;
    return next_;
}

void QD_Synthetic_Mic::move_block()
{
    std::erase_if(ports_, [](const auto& port) { return port->closed(); });
    std::array<int16_t, BLOCK> block;
    source_(block);
    for (const auto& port : ports_)
        port->write(block);
}

QD_Synthetic_Mic::Source qd_tone_source(double hertz)
{
    const double step = hertz / QD_AL_RATE;
    return [step, turns = 0.0](std::span<int16_t> out) mutable {
        for (int16_t& sample : out) {
            sample
                = static_cast<int16_t>(std::lround(16384 * std::sin(2 * std::numbers::pi * turns)));
            turns += step;
            turns -= std::floor(turns);
        }
    };
}

QD_Synthetic_Mic::Source qd_file_source(const std::string& path, std::string& why)
{
    SF_INFO info {};
    // Shared only because std::function wants to be able to copy what it holds.
    std::shared_ptr<SNDFILE> file(sf_open(path.c_str(), SFM_READ, &info), [](SNDFILE* opened) {
        if (opened != nullptr)
            sf_close(opened);
    });
    if (!file) {
        why = sf_strerror(nullptr);
        return nullptr;
    }
    if (info.samplerate != QD_AL_RATE || info.channels != 1 || !info.seekable) {
        why = "it has " + std::to_string(info.samplerate) + " Hz and "
            + std::to_string(info.channels) + " channels, 8000 Hz mono is needed";
        return nullptr;
    }
    std::array<int16_t, 1> probe;
    if (sf_read_short(file.get(), probe.data(), 1) != 1) {
        why = "there is no sound in it";
        return nullptr;
    }
    sf_seek(file.get(), 0, SEEK_SET);
    sf_command(file.get(), SFC_SET_SCALE_FLOAT_INT_READ, nullptr, SF_TRUE);

    return [file](std::span<int16_t> out) {
        bool rewound = false;
        while (!out.empty()) {
            const sf_count_t wanted = static_cast<sf_count_t>(out.size());
            const sf_count_t got = sf_read_short(file.get(), out.data(), wanted);
            out = out.subspan(static_cast<size_t>(std::max<sf_count_t>(got, 0)));
            if (got > 0) {
                rewound = false;
                continue;
            }
            if (rewound) // cut short since it was opened
                break;
            sf_seek(file.get(), 0, SEEK_SET);
            rewound = true;
        }
        std::fill(out.begin(), out.end(), int16_t {0});
    };
}

QD_File_Speaker::~QD_File_Speaker()
{
    end_thread();
    take_arrivals(); // a port that was opened has its file, even if it was never played
}

QD_File_Speaker::File QD_File_Speaker::open(const std::string& name, Begin begin)
{
    const bool fresh = begin == AT_START;
    SF_INFO info {};
    if (fresh) {
        info.samplerate = QD_AL_RATE;
        info.channels = 1;
        info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    }
    const std::string path = directory_ + "/" + name;
    const int fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC | (fresh ? O_CREAT | O_TRUNC : 0), 0600);
    File file(fd < 0 ? nullptr : sf_open_fd(fd, fresh ? SFM_WRITE : SFM_RDWR, &info, SF_TRUE));
    if (!file && !std::exchange(told_, true))
        fprintf(stderr, "QD_SPEAKER: %s: %s\n", path.c_str(),
            fd < 0 ? strerror(errno) : sf_strerror(nullptr));
    if (file && fresh) // a file that nothing is written to is to be a valid one, too
        sf_command(file.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
    else if (file)
        sf_seek(file.get(), 0, SEEK_END);
    return file;
}

void QD_File_Speaker::append(const File& file, std::span<const int16_t> samples)
{
    const sf_count_t count = static_cast<sf_count_t>(samples.size());
    if (file && count > 0 && sf_write_short(file.get(), samples.data(), count) != count
        && !std::exchange(told_, true))
        fprintf(stderr, "QD_SPEAKER: %s: %s\n", directory_.c_str(), sf_strerror(file.get()));
}

void QD_File_Speaker::opened(std::shared_ptr<QD_Al_Port> port)
{
    if (!std::exchange(begun_, true))
        mix_ = open("mix.wav", AT_START);
    const long stream = port->stream();
    const auto before = std::find_if(tracks_.begin(), tracks_.end(),
        [&](const Track& track) { return stream > 0 && track.port->stream() == stream; });
    if (before == tracks_.end())
        tracks_.push_back({std::move(port), open_track(stream)});
    else
        before->port = std::move(port); // the one before was closed in the same block
}

QD_File_Speaker::File QD_File_Speaker::open_track(long stream)
{
    const auto name = [](int number) { return "port-" + std::to_string(number) + ".wav"; };
    if (const auto known = numbers_.find(stream); known != numbers_.end())
        return open(name(known->second), AT_END);
    if (files_ == MOST_FILES)
        return nullptr;
    ++files_;
    if (stream > 0)
        numbers_[stream] = files_;
    return open(name(files_), AT_START);
}

void QD_File_Speaker::move_block()
{
    std::array<int, BLOCK> sum {};
    for (const Track& track : tracks_) {
        std::array<int16_t, BLOCK> block;
        const size_t count = track.port->take(block);
        append(track.file, std::span(block).first(count));
        for (size_t i = 0; i < count; ++i)
            sum[i] += block[i];
    }
    std::array<int16_t, BLOCK> heard;
    std::transform(sum.begin(), sum.end(), heard.begin(),
        [](int sample) { return static_cast<int16_t>(std::clamp(sample, -32768, 32767)); });
    append(mix_, heard);
    std::erase_if(tracks_, [](const Track& track) { return track.port->closed(); });

    if (++beats_ % 100 != 0)
        return;
    if (mix_)
        sf_command(mix_.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
    for (const Track& track : tracks_) {
        if (track.file)
            sf_command(track.file.get(), SFC_UPDATE_HEADER_NOW, nullptr, 0);
    }
}

void QD_File_Speaker::skipped(long beats)
{
    static constexpr std::array<int16_t, BLOCK> SILENCE {};
    for (long i = 0; i < std::min(beats, 100L); ++i)
        append(mix_, SILENCE);
}

namespace {

class No_Device : public QD_Al_Device {
public:
    void attach(std::shared_ptr<QD_Al_Port>) override {}
};

std::shared_ptr<QD_Al_Device> started(std::shared_ptr<QD_Headless> device, std::string& why)
{
    if (device->run_in_background() == 0)
        return device;
    why = "no thread for it";
    return nullptr;
}

}

std::shared_ptr<QD_Al_Device> qd_make_no_device(const std::string& argument, std::string& why)
{
    if (argument.empty())
        return std::make_shared<No_Device>();
    why = "nothing may follow its name";
    return nullptr;
}

std::shared_ptr<QD_Al_Device> qd_make_tone_mic(const std::string& argument, std::string& why)
{
    char* end = nullptr;
    const double hertz = std::strtod(argument.c_str(), &end);
    if (end == argument.c_str() || *end != '\0' || !(hertz > 0 && hertz < QD_AL_RATE / 2)) {
        why = "a frequency between 0 and 4000 Hz is needed";
        return nullptr;
    }
    return started(std::make_shared<QD_Synthetic_Mic>(qd_tone_source(hertz)), why);
}

std::shared_ptr<QD_Al_Device> qd_make_file_mic(const std::string& argument, std::string& why)
{
    auto source = qd_file_source(argument, why);
    return source ? started(std::make_shared<QD_Synthetic_Mic>(std::move(source)), why) : nullptr;
}

std::shared_ptr<QD_Al_Device> qd_make_file_speaker(const std::string& argument, std::string& why)
{
    std::error_code error;
    std::filesystem::create_directories(argument, error);
    if (!std::filesystem::is_directory(argument, error)) {
        why = "there is no such directory, and it cannot be made";
        return nullptr;
    }
    return started(std::make_shared<QD_File_Speaker>(argument), why);
}
