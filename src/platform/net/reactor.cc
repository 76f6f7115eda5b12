#include "platform/net/reactor.h"

#include <algorithm>

int Reactor::register_handler(Event_Handler* handler, Event_Type)
{
    const int fd = handler->get_handle();
    const auto same = [&](const Entry& entry) { return entry.handler == handler; };
    if (fd < 0 || std::any_of(entries_.begin(), entries_.end(), same))
        return -1;
    entries_.push_back({handler, fd, false});
    return 0;
}

int Reactor::remove_handler(Event_Handler* handler, Event_Type)
{
    const auto same = [&](const Entry& entry) { return entry.handler == handler; };
    return std::erase_if(entries_, same) > 0 ? 0 : -1;
}

void Reactor::add_wake(int fd) { wakes_.push_back(fd); }

void Reactor::remove_wake(int fd) { std::erase(wakes_, fd); }

int Reactor::wait(int extra, int milliseconds)
{
    polled_.clear();
    polled_.push_back({extra, POLLIN, 0}); // poll passes over a descriptor of -1
    for (int fd : wakes_)
        polled_.push_back({fd, POLLIN, 0});
    const size_t first_entry = polled_.size();
    for (const Entry& entry : entries_)
        polled_.push_back({entry.fd, POLLIN, 0});

    if (::poll(polled_.data(), polled_.size(), milliseconds) < 0)
        return 0; // a signal: to be looked at by whoever waits
    for (size_t i = 0; i < entries_.size(); ++i)
        entries_[i].ready = polled_[first_entry + i].revents != 0;
    return polled_[0].revents != 0 ? 1 : 0;
}

int Reactor::dispatch()
{
    int called = 0;
    for (;;) {
        // Looked for anew each time: the handler just called may have changed the list.
        auto next = std::find_if(
            entries_.begin(), entries_.end(), [](const Entry& entry) { return entry.ready; });
        if (next == entries_.end())
            return called;
        next->ready = false;
        next->handler->handle_event(QD_EVENT_READ);
        ++called;
    }
}
