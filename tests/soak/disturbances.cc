#include "tests/soak/disturbances.h"

#include <csignal>
#include <cstdio>

namespace {

constexpr std::chrono::seconds BOUND {1};    // until all are heard again
constexpr std::chrono::seconds PATIENCE {5}; // until that is given up

}

QD_Disturbances::QD_Disturbances(const Victims& v, const QD_Soak_Ear& ear) : ear_(ear)
{
    using std::chrono::seconds;
    const auto now = Clock::now();
    const auto signal_sound = [v](int signal) { ::kill(v.sound_server(), signal); };
    kinds_ = {
        {"sound server stopped", seconds(12), [=] { signal_sound(SIGSTOP); },
            [=] { signal_sound(SIGCONT); }, seconds(3), now + seconds(5)},
        {"X server stopped", seconds(60), [v] { ::kill(v.x_server, SIGSTOP); },
            [v] { ::kill(v.x_server, SIGCONT); }, seconds(3), now + seconds(9)},
        {"broker gone", seconds(20), [v] { v.broker.stop(SIGTERM); }, [v] { v.broker.start(); },
            seconds(2), now + seconds(14)},
        {"host cut off", seconds(45), [v] { v.network.set_cable(v.host, "down"); },
            [v] { v.network.set_cable(v.host, "up"); }, seconds(12), now + seconds(20)},
    };
}

void QD_Disturbances::start()
{
    thread_ = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

QD_Disturbances::~QD_Disturbances() = default;

void QD_Disturbances::run(const std::stop_token& stop)
{
    std::condition_variable_any never;
    std::mutex mutex;
    std::unique_lock hold(mutex);
    while (!stop.stop_requested()) {
        for (Kind& kind : kinds_)
            if (Clock::now() >= kind.next && !stop.stop_requested())
                disturb(kind);
        never.wait_for(hold, stop, std::chrono::milliseconds(200), [] { return false; });
    }
}

void QD_Disturbances::disturb(Kind& kind)
{
    const auto hold = calm();
    kind.next = Clock::now() + kind.every;
    kind.begin();
    std::this_thread::sleep_for(kind.lasts); // this is how long it lasts
    kind.end();
    const auto over = Clock::now();
    std::string silent;
    qd_wait_for([&] { return (silent = ear_.silent_since(over)).empty(); }, PATIENCE);
    const double seconds = std::chrono::duration<double>(Clock::now() - over).count();
    const std::lock_guard figures(mutex_);
    ++kind.times;
    kind.worst_s = std::max(kind.worst_s, seconds);
    if (trouble_.empty() && seconds > std::chrono::duration<double>(BOUND).count())
        trouble_ = std::string("not all are heard a second after: ") + kind.name + "; silent for "
            + std::to_string(seconds) + " s: " + silent;
}

std::string QD_Disturbances::trouble() const
{
    const std::lock_guard hold(mutex_);
    return trouble_;
}

void QD_Disturbances::report() const
{
    const std::lock_guard hold(mutex_);
    for (const Kind& kind : kinds_)
        printf("%-24s %4d times, all heard again after %.2f s at most\n", kind.name, kind.times,
            kind.worst_s);
}
