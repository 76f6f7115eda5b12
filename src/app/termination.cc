#include "app/termination.h"

#include "platform/base/signals.h"
#include "platform/base/wake.h"

#include <cerrno>
#include <csignal>

namespace {

const QD_Wake& asked()
{
    static const auto* const wake
        = new QD_Wake; // never destroyed: a signal may come at the very end
    return *wake;
}

void terminate(int /*signal*/)
{
    const int before = errno; // whatever was interrupted still looks at it
    asked().raise();
    errno = before;
}

void handle(int signal, void (*handler)(int))
{
    struct sigaction action {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

}

void thread_killed(int /*signal*/) {}

QD_Termination::QD_Termination()
{
    asked(); // made here, since a handler must not make it
    sigset_t none;
    sigemptyset(&none);
    pthread_sigmask(SIG_SETMASK, &none, nullptr); // who started us may have blocked some
    // Handled rather than ignored: programs that we start have it by default then.
    for (int signal : {SIGCHLD, SIGPIPE})
        handle(signal, thread_killed);
    for (int signal : {SIGTERM, SIGINT, SIGHUP})
        if (!qd_is_ignored(signal))
            handle(signal, terminate);
}

bool QD_Termination::requested() const { return asked().wait(0); }

int QD_Termination::get_handle() const { return asked().get(); }
