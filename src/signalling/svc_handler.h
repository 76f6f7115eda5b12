// What watches a member stream and serves the messages that arrive on it.
#pragma once

#include "platform/base/trace.h"
#include "platform/net/reactor.h"
#include "platform/net/sock_stream.h"
#include "signalling/places.h"

#include <chrono>
#include <memory>
#include <optional>
#include <utility>

/// A stream and its place in a reactor. The thread that drives the reactor.
template <class STREAM> class Svc_Handler : public Event_Handler {
public:
    Svc_Handler() = default;
    Svc_Handler(const Svc_Handler&) = delete;
    Svc_Handler& operator=(const Svc_Handler&) = delete;
    ~Svc_Handler() override { forget_reactor(); }

    int handle_event(Event_Type /*type*/) override { return 0; }
    int get_handle() override { return peer_.get_handle(); }

    /// Has the stream watched by `reactor`, not owned. Returns 0 or -1.
    virtual int open(Reactor* reactor)
    {
        no_print("Svc_Handler::open %d\n", get_handle());
        if (reactor == nullptr)
            return -1;
        reactor_ = reactor;
        return reactor_->register_handler(this, QD_EVENT_READ);
    }
    virtual int close() { return peer_.close(); }

    STREAM* peer() { return &peer_; }

protected:
    Reactor* reactor() { return reactor_; }

    void forget_reactor()
    {
        if (reactor_ == nullptr)
            return;
        reactor_->remove_handler(this, QD_EVENT_READ);
        reactor_->remove_handler(this, QD_EVENT_WRITE);
        reactor_ = nullptr;
    }

private:
    Reactor* reactor_ = nullptr;
    STREAM peer_;
};

/// A member stream. It ends, and the session controller learns of it, when the
/// peer ends it, sends nonsense, or takes too long. Adopted by the reactor; when
/// it goes, no member is left with its stream.
class QD_Svc_Handler : public Svc_Handler<SOCK_Stream> {
public:
    /// How long an incomplete message may last, and the first one of an accepted stream.
    static constexpr std::chrono::seconds MESSAGE_LIMIT {10};
    /// How long the peer may let something wait in the queue.
    static constexpr std::chrono::seconds DRAIN_LIMIT {2};
    /// More than these wait, so that a flood holds up nobody.
    static constexpr int MESSAGES_PER_EVENT = 8;
    static constexpr int MESSAGES_PER_SECOND = 200;

    ~QD_Svc_Handler() override;

    /// For an accepted stream, before open(): the place that it has.
    void set_place(std::unique_ptr<QD_Places::Place> place) { place_ = std::move(place); }

    int handle_event(Event_Type type) override;
    int handle_time(QD_Clock::Time now) override;

private:
    /// Whether something has gone on for too long.
    class Patience {
    public:
        bool exhausted(bool goes_on, QD_Clock::Time now, std::chrono::seconds limit)
        {
            if (!goes_on)
                since_.reset();
            else if (!since_)
                since_ = now;
            return since_ && now - *since_ >= limit;
        }
        void renew() { since_.reset(); }

    private:
        std::optional<QD_Clock::Time> since_;
    };

    bool message_complete();
    int receive_message();
    void watch_queue();
    int end();

    std::unique_ptr<QD_Places::Place> place_; // null for a stream that we have opened
    bool introduced_ = false;                 // a message has come
    bool watching_queue_ = false;
    int this_second_ = 0; // messages
    QD_Clock::Time second_began_;
    Patience with_message_;
    Patience with_queue_;
};
