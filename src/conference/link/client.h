// One client process and the framework's side of its link, from start to end.
#pragma once

#include "conference/base/child.h"
#include "conference/link/event_link.h"
#include "platform/base/clock.h"

#include <chrono>
#include <optional>
#include <poll.h>

/// How long a client may take for what.
struct QD_Bounds {
    std::chrono::milliseconds registration {5000}; // from its start
    std::chrono::milliseconds probe_every {2000};  // an echo probe this long after the last answer
    std::chrono::milliseconds echo {5000};         // for the answer
    std::chrono::milliseconds end {10000};         // from '>' to SIGTERM
    std::chrono::milliseconds insist {2000};       // from SIGTERM to SIGKILL
};

/// What the environment of a client says who is told of its members: calls
/// would number them in another way, and strangers have no business with it.
constexpr const char* QD_NO_CALLS = "QD_CALLS=none";

/// Starts `quendal`, takes the connection of this very process and no other,
/// checks its registration, probes it with echo events, and ends it with '>',
/// then SIGTERM, then SIGKILL. Nothing here waits: whoever owns it polls what
/// watch() names until deadline() and calls serve(). One thread.
class QD_Client {
public:
    enum State {
        STARTING, // not registered yet
        LINKED,   // registered, answers
        ENDING,   // asked to end, gone wrong, or has closed its link
        ENDED     // the process is no more; also before start()
    };

    explicit QD_Client(const QD_Bounds& bounds) : bounds_(bounds) {}

    /// Starts the process; the launch arguments AID, SID, AT and port are added
    /// to those of `launch`. Returns 0, or -1 and nothing runs.
    int start(QD_Launch launch);

    /// Sends a member record. Does nothing unless LINKED.
    void send(const QD_Bytes& record);

    /// Asks the client to end. One that cannot be asked gets SIGTERM.
    void end();

    /// Goes on to SIGTERM, or from there to SIGKILL, at once.
    void insist();

    State state() const { return state_; }

    /// What went wrong, as the rest of a sentence about the client
    /// ("did not register within 5 s"); "" if nothing did, or not yet.
    const std::string& trouble() const { return trouble_; }

    void watch(std::vector<pollfd>& polled) const;
    QD_Clock::Time deadline() const { return deadline_; }
    void serve();

private:
    void go_on(QD_Clock::Time now);
    void take_connection();
    void read_link();
    void lose_link();
    void check_registration();
    void check_echo(const QD_Event_Link::Received& event);
    void send_probe(QD_Clock::Time now);
    void process_ended();
    void finish();
    void fail(const std::string& why);

    const QD_Bounds bounds_;
    State state_ = ENDED;
    QD_Child child_;
    QD_Fd listener_;
    std::optional<QD_Event_Link> link_;
    QD_Bytes registration_; // the twelve bytes that are due
    QD_Bytes probe_;        // the payload that is due back, empty if none is
    QD_Clock::Time deadline_ = QD_Clock::Time::max();
    int signalled_ = 0; // the strongest signal sent
    bool asked_ = false;
    std::string trouble_;
};
