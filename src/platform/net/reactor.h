// The wait for many descriptors, and the calls to their handlers.
#pragma once

#include "platform/net/event_handler.h"

#include <poll.h>
#include <vector>

/// One thread drives it and calls every operation. Handlers may register and
/// remove handlers, themselves included, while they are being called.
class Reactor {
public:
    /// Watches the handler's descriptor. Returns 0, -1 if it is watched already or has none.
    int register_handler(Event_Handler* handler, Event_Type type);

    /// Returns 0, -1 if it was not registered for that.
    int remove_handler(Event_Handler* handler, Event_Type type);

    /// Makes a descriptor end waits when it is readable. The caller looks after
    /// what is to be read: a descriptor left readable ends every wait.
    void add_wake(int fd);
    void remove_wake(int fd);

    /// Waits up to `milliseconds` (0: not at all) for `extra` (-1: none), a wake
    /// descriptor or a handler. Returns 1 if `extra` is readable (or has failed
    /// or ended), else 0. A signal ends the wait, too.
    int wait(int extra, int milliseconds);

    /// Calls the handlers that the last wait found ready. Returns how many.
    int dispatch();

private:
    struct Entry {
        Event_Handler* handler;
        int fd;
        bool ready;
    };
    std::vector<Entry> entries_;
    std::vector<int> wakes_;
    std::vector<pollfd> polled_; // kept so that waiting does not allocate
};
