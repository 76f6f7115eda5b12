// What a process was told about its signals before it began.
#pragma once

#include <csignal>

/// Whether the signal is ignored: as nohup, and shells for what runs in the
/// background, want it to stay.
inline bool qd_is_ignored(int signal)
{
    struct sigaction now {};
    return sigaction(signal, nullptr, &now) == 0 && now.sa_handler == SIG_IGN;
}
