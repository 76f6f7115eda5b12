#include "tests/soak/disturbances.h"

#include <csignal>
#include <cstdio>

namespace {

constexpr double BOUND = 1;                  // seconds until all are heard and played again
constexpr std::chrono::seconds PATIENCE {5}; // what takes longer counts as so long
constexpr std::chrono::seconds FINDING {15}; // by a broker that could not be reached

double seconds_between(QD_Soak_Ear::Clock::time_point from, QD_Soak_Ear::Clock::time_point to)
{
    return std::chrono::duration<double>(to - from).count();
}

}

QD_Disturbances::QD_Disturbances(const Victims& v, const Witnesses& witnesses) :
    witnesses_(witnesses)
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
            [v] { v.network.set_cable(v.host, "up"); }, seconds(12), now + seconds(20),
            v.host_is_found},
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
    await_heard(kind, over);
    const auto found = kind.found ? await_found(kind, over) : over;
    for (const QD_Soak_Loudspeaker& speaker : witnesses_.speakers)
        await_played(kind, speaker, found);
    const std::lock_guard figures(mutex_);
    ++kind.times;
}

void QD_Disturbances::await_heard(Kind& kind, Clock::time_point over)
{
    std::string late;
    qd_wait_for(
        [&] {
            const std::string silent = witnesses_.ear.silent_since(over);
            late = silent.empty() ? late : silent;
            return silent.empty();
        },
        PATIENCE);
    judge(kind.heard_s, seconds_between(over, Clock::now()),
        std::string("heard after: ") + kind.name + "; silent:" + late);
}

/// Returns when all had found the member that they had given up.
QD_Disturbances::Clock::time_point QD_Disturbances::await_found(Kind& kind, Clock::time_point over)
{
    const bool found = qd_wait_for(kind.found, FINDING);
    const auto now = Clock::now();
    const std::lock_guard figures(mutex_);
    kind.found_s = std::max(kind.found_s, seconds_between(over, now));
    if (trouble_.empty() && !found)
        trouble_ = std::string("a member is not found again after: ") + kind.name;
    return now;
}

void QD_Disturbances::await_played(
    Kind& kind, const QD_Soak_Loudspeaker& speaker, Clock::time_point over)
{
    QD_Soak_Loudspeaker::Played played {};
    const bool steady = qd_wait_for(
        [&] {
            played = speaker.played_since(over);
            return played.steady;
        },
        PATIENCE);
    judge(kind.played_s, seconds_between(over, steady ? played.since : Clock::now()),
        std::string("played after: ") + kind.name + "; " + speaker.sink() + " had not"
            + played.missed);
}

void QD_Disturbances::judge(double& worst, double seconds, const std::string& what)
{
    const std::lock_guard figures(mutex_);
    worst = std::max(worst, seconds);
    if (trouble_.empty() && seconds > BOUND)
        trouble_ = std::to_string(seconds) + " s passed until all were " + what;
}

std::string QD_Disturbances::trouble() const
{
    const std::lock_guard hold(mutex_);
    return trouble_;
}

void QD_Disturbances::report() const
{
    const std::lock_guard hold(mutex_);
    for (const Kind& kind : kinds_) {
        printf(
            "%-24s %4d times, all heard again after %.2f s", kind.name, kind.times, kind.heard_s);
        if (kind.found)
            printf(", found again after %.2f s", kind.found_s);
        printf("%s after %.2f s at most\n", kind.found ? ", and then played" : ", played again",
            kind.played_s);
    }
}
