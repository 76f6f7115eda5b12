// One member of a conference across machines: its membership over a real broker.
#pragma once

#include "conference/broker/broker_link.h"
#include "conference/broker/membership.h"

/// Joins the broker's conference and keeps to it until it is left. While the
/// broker cannot be reached nobody comes or goes. No operation waits; see
/// QD_Broker_Link. One thread.
class QD_Agent : private QD_Broker_Events {
public:
    struct Member {
        std::string name;
        uint32_t address = 0; // as a number; others send their media to it
    };

    /// `events` outlives the agent; what it tells may not destroy the agent.
    QD_Agent(const QD_Broker_Url& url, const Member& member, QD_Conference_Events& events,
        const QD_Membership_Times& times = {});

    /// The client that the admission was for takes part from now on.
    void ready();

    /// Leaves in order. It has left when over() says so, at most a second later.
    void leave();
    bool over() const { return link_.closed(); }

    const QD_Membership& membership() const { return membership_; }
    const std::string& owner() const { return link_.owner(); } // of its records

    void watch(std::vector<pollfd>& polled) const { link_.watch(polled); }
    QD_Clock::Time deadline() const;
    void serve();

private:
    void link_up() override;
    void link_down(const std::string& why) override;
    void received(const std::string& topic, std::string_view payload) override;

    const std::string broker_; // as it is called in what is said
    QD_Conference_Events& events_;
    QD_Broker_Link link_;
    QD_Membership membership_;
    bool lost_said_ = false;
};
