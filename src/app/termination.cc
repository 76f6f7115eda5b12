#include "app/termination.h"

#include "platform/net/wake.h"

#include <csignal>

namespace {

const QD_Wake& asked()
{
    static const QD_Wake wake;
    return wake;
}

void terminate(int /*signal*/) { asked().raise(); }

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
    handle(SIGCHLD, thread_killed);
    handle(SIGPIPE, SIG_IGN);
    for (int signal : {SIGTERM, SIGINT, SIGHUP})
        handle(signal, terminate);
}

bool QD_Termination::requested() const { return asked().wait(0); }

int QD_Termination::get_handle() const { return asked().get(); }
