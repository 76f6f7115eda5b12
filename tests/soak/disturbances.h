// What goes wrong around the members while they go on, and whether they are heard soon afterwards.
#pragma once

#include "tests/soak/ear.h"
#include "tests/support/broker.h"
#include "tests/support/network.h"

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

/// Again and again, from a thread of its own, one at a time: the sound server and the X server
/// stand still, the broker goes and returns, a host is cut off. When each is over, all who are
/// listened to have to be heard within a second.
class QD_Disturbances {
public:
    /// What is disturbed. Outlives this object.
    struct Victims {
        std::function<pid_t()> sound_server;
        pid_t x_server;
        QD_Test_Broker& broker;
        const QD_Test_Network& network;
        int host; // that is cut off
    };

    /// `ear` is where it is to be heard, and outlives this object.
    QD_Disturbances(const Victims& victims, const QD_Soak_Ear& ear);

    /// Begins; nothing is disturbed before.
    void start();
    ~QD_Disturbances();

    /// Nothing is disturbed as long as this is held; waits until nothing is.
    std::unique_lock<std::mutex> calm() { return std::unique_lock(calm_); }

    /// The first that was not heard again in time, "" if all were.
    std::string trouble() const;

    /// Prints how often what happened, and the longest time until all were heard.
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
        int times = 0;
        double worst_s = 0; // until all were heard
    };
    void run(const std::stop_token& stop);
    void disturb(Kind& kind);

    const QD_Soak_Ear& ear_;
    std::vector<Kind> kinds_;
    std::mutex calm_;
    mutable std::mutex mutex_; // of the following and the kinds' figures
    std::string trouble_;
    std::jthread thread_; // goes first
};
