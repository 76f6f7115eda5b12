// Who is in a conference whose members know one another through a broker only.
#pragma once

#include "conference/broker/presence.h"
#include "platform/base/clock.h"

#include <functional>
#include <map>
#include <set>

/// How long what takes in a membership.
struct QD_Membership_Times {
    std::chrono::milliseconds beat {2000};      // between two records of a member
    std::chrono::milliseconds hold {500};       // from a record's removal to the member's
    std::chrono::milliseconds settle {1000};    // in which two live members settle who keeps an id
    std::chrono::milliseconds patience {12000}; // for a taken address to come free
    std::chrono::milliseconds recovery {8000};  // for the others to come back after the broker
    std::chrono::milliseconds answer {6000};    // for the broker to carry our own record to us
    int misses = 4; // so many own records carried and none of a member's: it is gone
};

/// What a member is told of its conference, from within the operations that
/// bring it about; what is told must not end in another such operation.
class QD_Conference_Events {
public:
    virtual ~QD_Conference_Events() = default;

    /// The claim has come through: the conference can be joined as `self`.
    /// Answered by ready(), now or later. Said again when the broker returns
    /// before that.
    virtual void admitted(const QD_Presence& self) = 0;

    /// The member is in the conference, is in it no longer. The first to come
    /// is this member itself; only this member knows of others than itself.
    virtual void came(const QD_Presence& member) = 0;
    virtual void went(const QD_Presence& member, const char* how) = 0;

    /// Something that the user should know, a sentence about `whom`.
    virtual void say(const std::string& whom, const std::string& what) = 0;

    /// This member cannot be, or cannot stay, in the conference. It has withdrawn.
    virtual void failed(const std::string& why) = 0;
};

/// The part of one member in a conference, without a network and a clock of its
/// own: records come in, records go out.
///
/// A member claims a random id and its address with a record. Once the broker
/// has carried that record back, everything that was said earlier is known: if
/// another one holds the id, a new one is rolled; if another one holds the
/// address, it is waited for. Then the member is live. A live member stays what
/// it is: later records that ask for its id or address are refused.
///
/// A member is gone when it says so; when its record is removed and not renewed
/// within `hold_`; or when our own records keep coming back and none of its own
/// comes. So a broker that stops or restarts removes nobody. One thread.
class QD_Membership {
public:
    static constexpr size_t MAX_MEMBERS = 100; // with this one: a client has no more places
    static constexpr size_t MAX_RECORDS = 256; // of others, live or not, that are looked at

    using Time = QD_Clock::Time;

    struct Self {
        std::string owner; // under which our records are kept; unique for ever
        std::string name;
        uint32_t address = 0;
    };

    struct Surroundings {
        std::function<uint32_t()> random;                // any 32 bits
        std::function<bool(uint32_t address)> reachable; // whether datagrams can be sent there
        std::function<void(const std::string& record)> publish; // retain it; "": remove it
    };

    /// `events` outlives this object.
    QD_Membership(const Self& self, Surroundings surroundings, QD_Conference_Events& events,
        const QD_Membership_Times& times = {});

    /// The broker has been reached and gives us all records, the retained ones first.
    void connect(Time now);

    /// The broker has been lost.
    void disconnect();

    /// A record that the broker has carried; empty: removed.
    void take(const std::string& owner, std::string_view record, Time now);

    /// An admitted member can be announced to the others.
    void ready(Time now);

    /// Withdraws from the conference.
    void leave();

    /// When to call keep_time() at the latest.
    Time deadline() const;
    void keep_time(Time now);

    /// Whether the broker has not carried our record for too long: it is to be
    /// reached anew.
    bool unanswered(Time now) const;

    bool live() const { return state_ == LIVE; }
    bool admitted() const { return admitted_; } // once and for all
    bool over() const { return state_ == OVER; }
    const QD_Presence& self() const { return self_; }

    /// The others, by their owners.
    std::map<std::string, QD_Presence> others() const;

private:
    struct Peer {
        QD_Presence record;
        bool announced = false; // told to the client
        Time since;             // announced then
        int missed = 0;         // own records carried since its last one
        Time departs = Time::max();
        std::string refused; // why it is not announced, as it was said
    };
    using Peers = std::map<std::string, Peer>;
    enum State { OUT, CLAIMING, ADMITTED, LIVE, OVER };

    void publish(Time now);
    void take_own(std::string_view record, Time now);
    void take_peer(const std::string& owner, const QD_Presence& record, Time now);
    void count_misses(Time now);
    void settle_claim(Time now);
    std::string place_trouble() const;
    void go_live(Time now);
    void admit(const std::string& owner, Peer& peer, Time now);
    void admit_all(Time now);
    std::string obstacle(const std::string& owner, const Peer& peer, Time now);
    bool yield_to(const std::string& owner, const Peer& peer, Time now);
    void withdraw(Peer& peer, const char* how);
    Peers::iterator remove(Peers::iterator peer, const char* how);
    void refuse(const std::string& owner, const std::string& why);
    void roll_id();
    void fail(const std::string& why);

    const std::string owner_;
    const Surroundings surroundings_;
    QD_Conference_Events& events_;
    const QD_Membership_Times times_;
    State state_ = OUT;
    bool connected_ = false;
    bool was_connected_ = false;
    bool admitted_ = false;
    bool ready_ = false;
    bool announced_ = false; // our client knows of itself, and so of the others
    QD_Presence self_;
    std::string sent_;     // our newest record
    bool answered_ = true; // the broker has carried it
    Time published_ {};
    Time counted_ {}; // the misses of the others
    Time beat_ = Time::max();
    Time patient_until_ = Time::max();
    Time returning_until_ {}; // members may still be on their way back to the broker
    Time live_since_ {};
    Peers peers_;
    std::set<std::string> refused_; // owners of records that could not be read
};
