// What a reactor tells when a descriptor is ready.
#pragma once

/// The kinds of readiness a handler can be registered for.
enum Event_Type { QD_EVENT_READ = 2 };

/// Owned by whoever registers it; removed from the reactor before it goes.
/// All operations run on the thread that drives the reactor.
class Event_Handler {
public:
    virtual ~Event_Handler() = default;

    /// The descriptor is ready. Returns 0, or -1 if the handler has ended and
    /// has removed itself (it may have been deleted: it is not touched again).
    virtual int handle_event(Event_Type type) = 0;

    /// The descriptor to watch, the same for as long as it is registered.
    virtual int get_handle() = 0;
};
