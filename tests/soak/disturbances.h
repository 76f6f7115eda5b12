// What goes wrong around the members while they go on, and whether their voices are sent and played
// soon afterwards.
#pragma once

#include "tests/soak/ear.h"
#include "tests/soak/loudspeaker.h"
#include "tests/support/broker.h"
#include "tests/support/network.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

/// Again and again, from a thread of its own, one at a time: the sound server and the X server
/// stand still, the broker goes and returns, a host is cut off. When each is over, all who are
/// listened to have to be heard within a second, and all loudspeakers have to play all voices. A
/// member that is cut off for so long is given up by the others; its voice and theirs are played
/// from the time on at which they have found one another again.
class QD_Disturbances {
public:
    /// What is disturbed. Outlives this object.
    struct Victims {
        std::function<pid_t()> sound_server;
        pid_t x_server;
        QD_Test_Broker& broker;
        const QD_Test_Network& network;
        int host;                            // that is cut off
        std::function<bool()> host_is_found; // whether all others know of its member
    };

    /// Where the voices are to arrive. Outlives this object.
    struct Witnesses {
        const QD_Soak_Ear& ear;
        const std::deque<QD_Soak_Loudspeaker>& speakers;
    };

    QD_Disturbances(const Victims& victims, const Witnesses& witnesses);

    /// Begins; nothing is disturbed before.
    void start();
    ~QD_Disturbances();

    /// Nothing is disturbed as long as this is held; waits until nothing is.
    std::unique_lock<std::mutex> calm() { return std::unique_lock(calm_); }

    /// The first that was not heard or not played again in time, "" if all were.
    std::string trouble() const;

    /// Prints how often what happened, and the longest times until all were heard, and played.
    void report() const;

private:
    using Clock = std::chrono::steady_clock;
    struct Kind {
        const char* name;
        std::chrono::seconds every;
        std::function<void()> begin;
        std::function<void()> end;
        std::chrono::seconds lasts;
        Clock::time_point next;
        std::function<bool()> found {}; // none: no member is given up
        int times = 0;
        double heard_s = 0;  // the longest time until all were
        double found_s = 0;  // until a member that was given up was in again
        double played_s = 0; // from there
    };
    void run(const std::stop_token& stop);
    void disturb(Kind& kind);
    void await_heard(Kind& kind, Clock::time_point over);
    Clock::time_point await_found(Kind& kind, Clock::time_point over);
    void await_played(Kind& kind, const QD_Soak_Loudspeaker& speaker, Clock::time_point over);
    void judge(double& worst, double seconds, const std::string& what);

    const Witnesses witnesses_;
    std::vector<Kind> kinds_;
    std::mutex calm_;
    mutable std::mutex mutex_; // of the following and the kinds' figures
    std::string trouble_;
    std::jthread thread_; // goes first
};
