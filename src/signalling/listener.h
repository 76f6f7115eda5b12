// Where other members' streams arrive.
#pragma once

#include "platform/base/fd.h"
#include "platform/net/reactor.h"
#include "signalling/places.h"

#include <memory>

/// Accepts streams and has each served by a handler of its own, which the
/// reactor adopts. User-interface thread.
class QD_Listener : public Event_Handler {
public:
    static constexpr int ACCEPTS_PER_EVENT = 32;
    /// How long the door stays shut when the system cannot let anybody in.
    static constexpr std::chrono::milliseconds PAUSE {200};

    /// The reactor is not owned and outlives the listener.
    explicit QD_Listener(Reactor* reactor);
    ~QD_Listener() override { close(); }
    QD_Listener(const QD_Listener&) = delete;
    QD_Listener& operator=(const QD_Listener&) = delete;

    /// Listens at this program's address, for those whom the session's policy
    /// admits: the streams of others are closed at once. Returns 0, also when
    /// there are no calls and nothing listens, or -1 with a line on standard
    /// error; then nothing arrives.
    int open();

    /// Streams already accepted stay.
    void close();

    int handle_event(Event_Type type) override;
    int get_handle() override { return fd_.get(); }

private:
    class Pause;
    bool accept_one();
    int send_away();
    void serve(QD_Fd fd, uint32_t host);
    void pause();

    Reactor* const reactor_;
    QD_Fd fd_;
    QD_Fd spare_; // given up for a moment when there is no other descriptor
    QD_Places places_;
    std::shared_ptr<QD_Listener*> self_; // what a pause comes back to, while it is open
};
