// A window of 100 ms holds a whole number of turns of each tone that is a multiple of 10 Hz. Such
// tones do not disturb one another there, so that one bin of a Fourier transform tells whether one
// of them is in the mix. A gap or a jump in one tone does spread to the others for a window; this
// is why a tone counts as played only when several windows in a row have it.
//
// Windows are dated by their arrival. A sound server that goes on after a stop plays what it has
// missed in one burst: the old sound that its buffers still had, then silence. The silence ends the
// row, and a burst is too short to make up STEADY.
#include "tests/soak/loudspeaker.h"

#include "tests/support/signal_math.h"

#include <array>
#include <poll.h>
#include <sys/stat.h>

namespace {

constexpr size_t WINDOW = 800; // samples, as long as a packet

// Measured with every codec: a tone is played with an amplitude of 560 to 4000, without it a window
// has less than 200 there.
constexpr double AUDIBLE = 300;

constexpr std::chrono::milliseconds STEADY {300};

}

QD_Soak_Loudspeaker::QD_Soak_Loudspeaker(const std::string& sink, const std::vector<int>& tones) :
    sink_(sink),
    tones_(tones)
{
    const std::string name = dir_ / "recorded";
    ::mkfifo(name.c_str(), 0600);
    // Open for both, it outlasts each recorder.
    pipe_ = QD_Fd(::open(name.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    thread_ = std::jthread([this](const std::stop_token& stop) { listen(stop); });
}

QD_Soak_Loudspeaker::~QD_Soak_Loudspeaker() = default;

void QD_Soak_Loudspeaker::record()
{
    recorder_.reset();
    recorder_.emplace(
        std::vector<std::string> {"sh", "-c",
            "exec parec --raw --format=s16le --rate=8000 --channels=1 --latency-msec=20 -d " + sink_
                + ".monitor 2>/dev/null"},
        QD_Surroundings {.out = dir_ / "recorded"});
}

QD_Soak_Loudspeaker::Played QD_Soak_Loudspeaker::played_since(Clock::time_point when) const
{
    const std::lock_guard hold(mutex_);
    const Clock::time_point since = std::max(since_.value_or(newest_), when);
    return {newest_ - since >= STEADY, since, newest_ > when ? missed_ : " everything"};
}

void QD_Soak_Loudspeaker::listen(const std::stop_token& stop)
{
    std::array<int16_t, WINDOW> window {};
    const auto bytes = std::as_writable_bytes(std::span(window));
    size_t filled = 0;
    while (!stop.stop_requested()) {
        pollfd readable {pipe_.get(), POLLIN, 0};
        if (::poll(&readable, 1, 20) <= 0)
            continue;
        const ssize_t got = ::read(pipe_.get(), &bytes[filled], bytes.size() - filled);
        filled += static_cast<size_t>(std::max<ssize_t>(got, 0));
        if (filled < bytes.size())
            continue;
        judge(window);
        filled = 0;
    }
}

void QD_Soak_Loudspeaker::judge(std::span<const int16_t> window)
{
    std::string missed;
    for (int hertz : tones_)
        if (qd_amplitude(window, hertz) < AUDIBLE)
            missed += " " + std::to_string(hertz) + " Hz";
    const std::lock_guard hold(mutex_);
    newest_ = Clock::now();
    if (missed.empty()) {
        since_ = since_.value_or(newest_);
    } else {
        since_.reset();
        missed_ = missed;
    }
}
