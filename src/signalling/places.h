// The places for streams that other hosts open.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <memory>

class SOCK_Stream;

/// Bounds how many there are, in all and from one host. When they are taken,
/// the stream that was heard longest ago and serves no member gives its own up.
/// User-interface thread.
class QD_Places {
    struct Guest {
        uint32_t host;
        SOCK_Stream* stream; // null once it has been ended to make room
    };
    using Guests = std::list<Guest>; // the one heard last is at the end

public:
    static constexpr int MAX_STREAMS = 128;
    static constexpr int MAX_PER_HOST = 16;

    /// What a stream's handler keeps as long as there is the stream.
    class Place {
    public:
        ~Place() { guests_->erase(self_); }
        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

        /// A message has come.
        void heard() { guests_->splice(guests_->end(), *guests_, self_); }

    private:
        friend QD_Places;
        Place(std::shared_ptr<Guests> guests, Guests::iterator self) :
            guests_(std::move(guests)),
            self_(self)
        {
        }
        std::shared_ptr<Guests> guests_; // outlive the places' owner with the streams
        Guests::iterator self_;
    };

    /// Whether a stream is some member's, or a call's, and stays.
    using In_Use = std::function<bool(const SOCK_Stream*)>;
    explicit QD_Places(In_Use in_use) : in_use_(std::move(in_use)) {}

    /// A place for a stream from `host`, null if there is none. The stream
    /// outlives the place and is closed if it has to make room.
    std::unique_ptr<Place> take(uint32_t host, SOCK_Stream* stream);

private:
    using Among = std::function<bool(const Guest&)>;
    bool make_room(int bound, const Among& among);

    const In_Use in_use_;
    std::shared_ptr<Guests> guests_ = std::make_shared<Guests>();
};
