// The framework's end of one client's link: a stream of events that never waits.
#pragma once

#include "framework/link/link_wire.h"
#include "platform/base/fd.h"

/// One connected, non-blocking stream. One thread.
class QD_Event_Link {
public:
    /// What a client that does not read may leave unread with us, beyond what
    /// the kernel holds.
    static constexpr size_t MAX_QUEUED = 64 * 1024;

    struct Received {
        int type = 0;
        QD_Bytes payload;
    };

    explicit QD_Event_Link(QD_Fd fd) : fd_(std::move(fd)) {}

    /// For polling.
    int get() const { return fd_.get(); }

    /// Whether something is queued, so that polling should ask for room to write.
    bool wants_write() const { return !out_.empty(); }

    /// Reads what has arrived, at most one longest event. Returns 1 while the
    /// stream stands, 0 when the client has closed it, -1 when it has failed.
    int read();

    /// Takes the next `out.size()` bytes. Returns 1, or 0 while they are not there.
    int take(std::span<uint8_t> out);

    /// Takes the next event. Returns 1, 0 while it is not there, -1 if its
    /// length is one that no event has; the stream is of no use then.
    int take_event(Received& event);

    /// Queues an event and writes what goes out at once. Returns 0, or -1 if
    /// the queue is full; the event is not sent then. A stream that fails shows
    /// at the next read() or flush().
    int send(int type, std::span<const uint8_t> payload);

    /// Writes what goes out at once. Returns 0, -1 if the stream has failed.
    int flush();

private:
    QD_Fd fd_;
    QD_Bytes in_;
    QD_Bytes out_;
};
