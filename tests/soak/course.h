// What happens in the course of the soak, again and again.
#pragma once

#include "tests/soak/disturbances.h"
#include "tests/soak/figures.h"
#include "tests/soak/member.h"
#include "tests/support/broker.h"
#include "tests/support/pulse_server.h"
#include "tests/support/x_server.h"

#include <memory>

/// A conference over a broker, each member on a host of its own, all at one X server with its
/// window manager. Half of the members stay, half come and go.
class QD_Soak_Course {
public:
    /// With `disturbed` QD_Disturbances has its way meanwhile.
    QD_Soak_Course(size_t members, bool disturbed);

    /// Brings everybody in, and has those who stay watched. Returns whether all went well, as do
    /// the others; what did not is printed.
    bool begin(QD_Figures& figures);

    /// Every round has the same in it: all guests leave and come back; whoever stays changes its
    /// options, switches its camera and opens every window there is; the sound server dies and is
    /// started again, and so is the broker. In the end all must know of all again.
    bool round();

    bool end();

private:
    void join(size_t seat);
    void leave(size_t seat);
    void use_windows(QD_Soak_Member& member, size_t number);
    void restore_windows(QD_Soak_Member& member, size_t number);
    void start_sound();
    void wait_for_sound(const std::string& when);
    void feed_microphone();
    void wait_for_broker();
    bool cut_off_is_found() const;
    void restart_broker();
    std::string voice(size_t seat) const;
    std::vector<int> tones_at(size_t seat) const;
    static std::string address(size_t seat) { return "10.77.0." + std::to_string(seat + 1); }
    void hold(bool held, const std::string& what);
    bool well() const;

    const QD_Temp_Dir dir_;
    const size_t half_; // seats below are those of members who stay
    const bool disturbed_;
    QD_X_Server x_server_ {"1600x1200x24"};
    QD_Pulse_Server sound_;
    std::optional<QD_Process> voice_; // that the microphone hears
    const QD_Test_Network network_;
    QD_Test_Broker broker_ {"allow_anonymous true\n", "10.77.0.254", network_.at(0)};
    std::vector<std::unique_ptr<QD_Soak_Member>> seats_; // null: nobody is there
    std::optional<QD_Soak_Ear> ear_;
    std::deque<QD_Soak_Loudspeaker> speakers_;
    std::optional<QD_Disturbances> disturbances_;
    int joinings_ = 0;
    std::string trouble_;
};
