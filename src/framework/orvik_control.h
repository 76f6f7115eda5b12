// The framework's say in the conference: who joins, who leaves, when it ends.
#pragma once

#include "signalling/session_control.h"

/// Owns the framework link. User-interface thread.
class QD_Orvik_Control {
public:
    /// How long one poll waits for an event.
    static constexpr int WAIT_MS = 100;

    /// Registers with the framework; without the four launch arguments, or if
    /// it cannot be reached, the process ends (see registerApp).
    QD_Orvik_Control(int argc, char** argv);
    ~QD_Orvik_Control();
    QD_Orvik_Control(const QD_Orvik_Control&) = delete;
    QD_Orvik_Control& operator=(const QD_Orvik_Control&) = delete;

    /// Waits up to `wait_ms` for an event (or whatever else the session's
    /// reactor watches), handles at most one, and lets the members serve their
    /// requests. Returns 0, or -1 if there is no link or the framework has
    /// ended the session. A link that fails ends the process.
    int handle_events(int wait_ms = WAIT_MS);

    /// Sends `len` bytes to the framework. Returns 0.
    int send_msg(const char* msg, int len);

private:
    int wait_for_event(int wait_ms);
    int receive();

    QD_Session_Control* const session_;
    int orvik_sock_; // 0: no link
};
