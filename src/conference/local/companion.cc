#include "conference/local/companion.h"

#include "conference/base/loop.h"

#include <algorithm>
#include <csignal>

QD_Companion::QD_Companion(QD_Conference& conference, std::ostream& out, int input) :
    conference_(conference),
    out_(out),
    commands_(conference, out),
    signals_(qd_block_ending_signals()),
    input_(input)
{
}

void QD_Companion::run(const QD_Course& course)
{
    std::vector<pollfd> polled;
    while (!conference_.over()) {
        polled.assign({{signals_.get(), POLLIN, 0}, {input_, POLLIN, 0},
            {command_.get(), POLLIN, 0}}); // poll passes over a descriptor of -1
        conference_.watch(polled);
        ::poll(polled.data(), polled.size(),
            qd_milliseconds_until(std::min(deadline_, conference_.deadline())));
        if (polled[0].revents != 0)
            read_signal();
        if (polled[1].revents != 0)
            read_input();
        conference_.serve();
        keep_time(course);
    }
}

void QD_Companion::read_signal()
{
    if (!qd_take_signal(signals_))
        return;
    if (ending_) {
        conference_.insist();
    } else {
        ending_ = true;
        conference_.end();
    }
}

void QD_Companion::read_input()
{
    char typed[512];
    const ssize_t got = ::read(input_, typed, sizeof typed);
    if (got <= 0)
        input_ = -1; // the conference goes on without a keyboard
    else
        commands_.take({typed, static_cast<size_t>(got)});
}

void QD_Companion::keep_time(const QD_Course& course)
{
    const QD_Clock::Time now = QD_Clock::real().now();
    switch (phase_) {
    case GATHERING:
        if (conference_.settled() && course.length.count() > 0) {
            phase_ = TALKING;
            deadline_ = now + course.length;
        }
        break;
    case TALKING:
        if (now >= deadline_)
            start_end(course);
        break;
    case COMMAND:
        if (command_.take_end()) {
            if (!command_.ended_well())
                out_ << course.before_end << ": " << command_.how_it_ended() << std::endl;
        } else if (now >= deadline_) {
            out_ << course.before_end << ": takes too long" << std::endl;
            command_.signal(SIGKILL);
        } else {
            break;
        }
        phase_ = LEAVING;
        deadline_ = QD_Clock::Time::max();
        conference_.end();
        break;
    case LEAVING:
        command_.take_end();
        break;
    }
}

void QD_Companion::start_end(const QD_Course& course)
{
    phase_ = LEAVING;
    deadline_ = QD_Clock::Time::max();
    if (course.before_end.empty()) {
        conference_.end();
        return;
    }
    QD_Launch launch;
    launch.program = "/bin/sh";
    launch.arguments = {"-c", course.before_end};
    if (command_.start(launch) < 0) {
        out_ << course.before_end << ": cannot be started" << std::endl;
        conference_.end();
        return;
    }
    phase_ = COMMAND;
    deadline_ = QD_Clock::real().now() + course.command_bound;
}
