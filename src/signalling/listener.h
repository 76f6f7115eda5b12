// Where other members' streams arrive.
#pragma once

#include "platform/net/fd.h"
#include "platform/net/reactor.h"

#include <cstdint>
#include <map>
#include <memory>

/// Accepts streams and has each served by a handler of its own, which the
/// reactor adopts. User-interface thread.
class QD_Listener : public Event_Handler {
public:
    /// Streams beyond these, in all and from one host, are closed at once.
    static constexpr int MAX_STREAMS = 128;
    static constexpr int MAX_PER_HOST = 16;
    static constexpr int ACCEPTS_PER_EVENT = 32;

    /// The reactor is not owned and outlives the listener.
    explicit QD_Listener(Reactor* reactor) : reactor_(reactor) {}
    ~QD_Listener() override { close(); }
    QD_Listener(const QD_Listener&) = delete;
    QD_Listener& operator=(const QD_Listener&) = delete;

    /// Listens at this program's address. Returns 0, or -1 with a line on
    /// standard error; then nothing arrives.
    int open();

    /// Streams already accepted stay.
    void close();

    int handle_event(Event_Type type) override;
    int get_handle() override { return fd_.get(); }

private:
    /// How many streams there are from each host; outlives the listener with the streams.
    using Guests = std::map<uint32_t, int>;

    bool accept_one();
    std::shared_ptr<void> take_place(uint32_t host);

    Reactor* const reactor_;
    QD_Fd fd_;
    QD_Fd spare_; // given up for a moment when there is no other descriptor
    std::shared_ptr<Guests> guests_ = std::make_shared<Guests>();
};
