// A session whose streams one reactor serves, in a time that the test makes.
#pragma once

#include "tests/support/session.h"
#include "tests/support/stream_pair.h"
#include "tests/support/test_clock.h"

class QD_Stream_Test : public QD_Session_Test {
protected:
    QD_Stream_Test() { session_->set_reactor(&reactor_); }
    ~QD_Stream_Test() override { reactor_.clear(); }

    /// Passes of the control loop until nothing is ready.
    void run()
    {
        do
            reactor_.wait(-1, 0);
        while (reactor_.dispatch() > 0);
    }

    /// Seconds go by, a pass in each.
    void pass(int seconds)
    {
        for (int i = 0; i < seconds; ++i) {
            clock_.pass(std::chrono::seconds(1));
            run();
        }
    }

    QD_Test_Clock clock_;
    Reactor reactor_ {clock_};
};
