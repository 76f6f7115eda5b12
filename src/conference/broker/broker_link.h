// One agent's connection to an MQTT 5 broker, kept up as long as it is wanted.
#pragma once

#include "conference/base/host_lookup.h"
#include "conference/broker/broker_url.h"
#include "platform/base/clock.h"

#include <algorithm>
#include <memory>
#include <poll.h>
#include <vector>

struct mosquitto;

/// What a link tells. Called from serve() and drop() only;
/// received() and link_up() must not drop the link.
class QD_Broker_Events {
public:
    virtual ~QD_Broker_Events() = default;

    /// Connected and subscribed; what is retained comes next.
    virtual void link_up() = 0;

    /// The connection is lost, or could not be made; it is tried again. `why`
    /// is a sentence about the broker.
    virtual void link_down(const std::string& why) = 0;

    /// `topic` without the prefix that is subscribed. Bounded by MAX_MESSAGE.
    virtual void received(const std::string& topic, std::string_view payload) = 0;
};

/// Connects as USER to the broker's records `quendal/1/CONFERENCE/m/#` and
/// writes its own at `OWNER` below them; when the connection breaks, the broker
/// removes that one. No operation waits; see QD_Client for watch(), deadline()
/// and serve(). One thread.
class QD_Broker_Link {
public:
    static constexpr size_t MAX_MESSAGE = 4096; // the broker keeps back what is longer

    /// `events` outlives the link. `owner` is below a user's name: "USER/SOMETHING".
    QD_Broker_Link(QD_Broker_Url url, std::string owner, QD_Broker_Events& events);
    ~QD_Broker_Link();
    QD_Broker_Link(const QD_Broker_Link&) = delete;
    QD_Broker_Link& operator=(const QD_Broker_Link&) = delete;

    /// Begins to connect, at the next serve().
    void open();

    /// Writes the retained record (empty: removes it). Nothing unless connected.
    void publish(const std::string& record);

    /// Gives the present connection up and makes a new one.
    void drop(const std::string& why);

    /// Ends the connection in order, once all is written; it is not tried again.
    void close();
    const std::string& owner() const { return owner_; }
    bool closed() const { return state_ == CLOSED; }

    void watch(std::vector<pollfd>& polled) const;
    QD_Clock::Time deadline() const { return handle_ ? std::min(deadline_, upkeep_) : deadline_; }
    void serve();

private:
    enum State { CLOSED, WAITING, NAMING, CONNECTING, UP, CLOSING };
    struct Release {
        void operator()(mosquitto* handle) const;
    };
    struct Callbacks;

    void name(QD_Clock::Time now);
    void named(QD_Clock::Time now);
    void connect(QD_Clock::Time now);
    int prepare();
    int prepare_security();
    int prepare_shared_key();
    void transfer();
    void deliver();
    void connected(int reason);
    void subscribed(int count, const int* granted);
    void published(int reason);
    void lose(const std::string& why);
    std::string describe(int error) const;

    const QD_Broker_Url url_;
    const std::string prefix_;
    const std::string owner_;
    QD_Broker_Events& events_;
    std::unique_ptr<mosquitto, Release> handle_;
    QD_Host_Lookup lookup_;
    State state_ = CLOSED;
    QD_Clock::Time deadline_ = QD_Clock::Time::max(); // of the state
    QD_Clock::Time upkeep_ {};
    std::chrono::milliseconds pause_;
    std::vector<std::pair<std::string, std::string>> inbox_; // topics and payloads
    bool came_up_ = false;
    std::string log_;  // what the library said last of an error
    std::string doom_; // why the connection is to be given up, found within a callback
};
