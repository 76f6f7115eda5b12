// The companion's one loop: the conference, the keyboard, signals and time.
#pragma once

#include "conference/local/commands.h"

/// How long a conference goes on.
struct QD_Course {
    std::chrono::seconds length {0}; // from when all have registered; 0: until it ends by itself
    std::string before_end;          // a shell command, run when that time is over; "": none
    std::chrono::milliseconds command_bound {20000}; // for that command
};

/// SIGINT, SIGTERM and SIGHUP end a conference orderly; a second one does not
/// wait for clients that take their time. The signals are blocked from the
/// construction on, so make one before any client starts. One thread.
class QD_Companion {
public:
    /// Commands are read from `input` until it ends. Both others outlive this object.
    QD_Companion(QD_Conference& conference, std::ostream& out, int input);

    /// Returns when the conference is over.
    void run(const QD_Course& course);

private:
    void read_signal();
    void read_input();
    void keep_time(const QD_Course& course);
    void start_end(const QD_Course& course);

    QD_Conference& conference_;
    std::ostream& out_;
    QD_Commands commands_;
    QD_Fd signals_;
    int input_; // -1 once it has ended
    bool ending_ = false;
    QD_Child command_;
    QD_Clock::Time deadline_ = QD_Clock::Time::max();
    enum { GATHERING, TALKING, COMMAND, LEAVING } phase_ = GATHERING;
};
