// What a reactor tells when a descriptor is ready.
#pragma once

#include "platform/base/clock.h"

/// The kinds of readiness a handler can be registered for, one by one.
enum Event_Type { QD_EVENT_READ = 2, QD_EVENT_WRITE = 4 };

/// Owned by whoever registers it, or by the reactor that adopted it; removed
/// from the reactor before it goes. All operations run on the thread that
/// drives the reactor.
class Event_Handler {
public:
    virtual ~Event_Handler() = default;

    /// The descriptor is ready, or has failed or ended (QD_EVENT_READ). Returns
    /// 0, or -1 if the handler has ended and has removed itself (it may have
    /// been deleted: it is not touched again).
    virtual int handle_event(Event_Type type) = 0;

    /// The descriptor to watch, the same for as long as it is registered.
    virtual int get_handle() = 0;

    /// Called in every dispatch of the reactor that adopted it, so that what
    /// takes too long can be ended. Returns as handle_event does.
    virtual int handle_time(QD_Clock::Time /*now*/) { return 0; }
};
