// The wait for many descriptors, and the calls to their handlers.
#pragma once

#include "platform/net/event_handler.h"

#include <functional>
#include <memory>
#include <poll.h>
#include <vector>

/// One thread drives it and calls every operation. Handlers may register and
/// remove handlers, themselves included, while they are being called.
class Reactor {
public:
    /// `clock` gives the time that handlers are told; it outlives the reactor.
    explicit Reactor(const QD_Clock& clock = QD_Clock::real()) : clock_(clock) {}
    ~Reactor() { clear(); }
    Reactor(const Reactor&) = delete;
    Reactor& operator=(const Reactor&) = delete;

    /// Watches the handler's descriptor. Returns 0, -1 if it is watched for that
    /// already or there is none.
    int register_handler(Event_Handler* handler, Event_Type type);

    /// Returns 0, -1 if it was not registered for that.
    int remove_handler(Event_Handler* handler, Event_Type type);

    /// Takes a handler over, which may be watched or not: it is told the time in
    /// every dispatch, and deleted after an operation of it has returned -1, or
    /// with the reactor.
    void adopt(std::unique_ptr<Event_Handler> handler);

    /// Deletes the adopted handlers. Not while handlers are being called.
    void clear();

    /// Makes a descriptor end waits when it is readable. The caller looks after
    /// what is to be read: a descriptor left readable ends every wait.
    void add_wake(int fd);

    /// What waits: poll(2), unless another loop is to go on meanwhile.
    using Poll = std::function<int(pollfd*, nfds_t, int milliseconds)>;
    void set_poll(Poll poll) { poll_ = std::move(poll); }

    /// Waits up to `milliseconds` (0: not at all) for `extra` (-1: none), a wake
    /// descriptor or a handler. Returns 1 if `extra` is readable (or has failed
    /// or ended), else 0. A signal ends the wait, too.
    int wait(int extra, int milliseconds);

    /// Calls the handlers that the last wait found ready, then tells the
    /// adopted ones the time. Returns how many were ready.
    int dispatch();

private:
    struct Entry {
        Event_Handler* handler;
        int fd;
        int watched; // Event_Type values, or-ed
        int ready;   // likewise
    };
    struct Adopted {
        std::unique_ptr<Event_Handler> handler;
        bool told; // the time, in this dispatch
    };
    void settle(Event_Handler* handler, int result);

    const QD_Clock& clock_;
    Poll poll_ = ::poll;
    std::vector<Entry> entries_;
    std::vector<Adopted> adopted_;
    std::vector<int> wakes_;
    std::vector<pollfd> polled_; // kept so that waiting does not allocate
};
