#include "conference/base/loop.h"

#include "platform/base/signals.h"

#include <algorithm>
#include <csignal>
#include <sys/signalfd.h>

QD_Fd qd_block_ending_signals()
{
    sigset_t set;
    sigemptyset(&set);
    for (int number : {SIGINT, SIGTERM, SIGHUP})
        if (!qd_is_ignored(number)) // blocked ones would come all the same
            sigaddset(&set, number);
    ::sigprocmask(SIG_BLOCK, &set, nullptr);
    return QD_Fd(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
}

bool qd_take_signal(const QD_Fd& signals)
{
    signalfd_siginfo info;
    return ::read(signals.get(), &info, sizeof info) == sizeof info;
}

int qd_milliseconds_until(QD_Clock::Time time)
{
    using std::chrono::milliseconds;
    constexpr int LONGEST_WAIT_MS = 60000;
    const auto left = time - QD_Clock::real().now();
    if (left > milliseconds(LONGEST_WAIT_MS))
        return LONGEST_WAIT_MS;
    // Rounded up: waking too early would only mean to wait again.
    return std::max(0, static_cast<int>(std::chrono::ceil<milliseconds>(left).count()));
}
