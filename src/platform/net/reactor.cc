#include "platform/net/reactor.h"

#include <algorithm>
#include <utility>

int Reactor::register_handler(Event_Handler* handler, Event_Type type)
{
    const int fd = handler->get_handle();
    if (fd < 0)
        return -1;
    const auto known = std::find_if(entries_.begin(), entries_.end(),
        [&](const Entry& entry) { return entry.handler == handler; });
    if (known == entries_.end())
        entries_.push_back({handler, fd, type, 0});
    else if ((known->watched & type) != 0)
        return -1;
    else
        known->watched |= type;
    return 0;
}

int Reactor::remove_handler(Event_Handler* handler, Event_Type type)
{
    const auto known = std::find_if(entries_.begin(), entries_.end(), [&](const Entry& entry) {
        return entry.handler == handler && (entry.watched & type) != 0;
    });
    if (known == entries_.end())
        return -1;
    known->watched &= ~type;
    known->ready &= ~type;
    if (known->watched == 0)
        entries_.erase(known);
    return 0;
}

void Reactor::adopt(std::unique_ptr<Event_Handler> handler)
{
    adopted_.push_back({std::move(handler), true});
}

void Reactor::clear()
{
    // Handlers remove themselves as they go.
    const auto going = std::exchange(adopted_, {});
}

void Reactor::add_wake(int fd) { wakes_.push_back(fd); }

int Reactor::wait(int extra, int milliseconds)
{
    polled_.clear();
    polled_.push_back({extra, POLLIN, 0}); // poll passes over a descriptor of -1
    for (int fd : wakes_)
        polled_.push_back({fd, POLLIN, 0});
    const size_t first_entry = polled_.size();
    for (const Entry& entry : entries_) {
        const int reading = (entry.watched & QD_EVENT_READ) != 0 ? POLLIN : 0;
        const int writing = (entry.watched & QD_EVENT_WRITE) != 0 ? POLLOUT : 0;
        polled_.push_back({entry.fd, static_cast<short>(reading | writing), 0});
    }

    if (poll_(polled_.data(), polled_.size(), milliseconds) < 0)
        return 0; // a signal: to be looked at by whoever waits
    for (size_t i = 0; i < entries_.size(); ++i) {
        const int found = polled_[first_entry + i].revents;
        const int reading = (found & ~POLLOUT) != 0 ? QD_EVENT_READ : 0;
        const int writing = (found & POLLOUT) != 0 ? QD_EVENT_WRITE : 0;
        entries_[i].ready = reading | writing;
    }
    return polled_[0].revents != 0 ? 1 : 0;
}

int Reactor::dispatch()
{
    // Looked for anew each time: the handler just called may have changed the list.
    int called = 0;
    for (;;) {
        const auto next = std::find_if(
            entries_.begin(), entries_.end(), [](const Entry& entry) { return entry.ready != 0; });
        if (next == entries_.end())
            break;
        const Event_Type type = (next->ready & QD_EVENT_READ) != 0 ? QD_EVENT_READ : QD_EVENT_WRITE;
        next->ready &= ~type;
        Event_Handler* handler = next->handler;
        settle(handler, handler->handle_event(type));
        ++called;
    }

    const QD_Clock::Time now = clock_.now();
    for (Adopted& one : adopted_)
        one.told = false;
    for (;;) {
        const auto next = std::find_if(
            adopted_.begin(), adopted_.end(), [](const Adopted& one) { return !one.told; });
        if (next == adopted_.end())
            return called;
        next->told = true;
        Event_Handler* handler = next->handler.get();
        settle(handler, handler->handle_time(now));
    }
}

// Deletes an adopted handler that has ended; what is not adopted may be gone already.
void Reactor::settle(Event_Handler* handler, int result)
{
    if (result != -1)
        return;
    const auto mine = std::find_if(adopted_.begin(), adopted_.end(),
        [&](const Adopted& one) { return one.handler.get() == handler; });
    if (mine == adopted_.end())
        return;
    const std::unique_ptr<Event_Handler> ended = std::move(mine->handler);
    adopted_.erase(mine);
}
