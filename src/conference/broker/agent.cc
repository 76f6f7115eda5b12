#include "conference/broker/agent.h"

#include "platform/net/host_address.h"

#include <random>

namespace {

QD_Clock::Time now_is() { return QD_Clock::real().now(); }

/// Where the member's records are kept: under the user's name, since that is
/// whom a broker lets write there, and apart from all other members ever.
std::string make_owner(const std::string& user)
{
    std::random_device random;
    constexpr char DIGITS[] = "0123456789abcdef";
    std::string owner = (user.empty() ? "anonymous" : user) + "/";
    for (int i = 0; i < 16; ++i)
        owner += DIGITS[random() % 16];
    return owner;
}

}

QD_Agent::QD_Agent(const QD_Broker_Url& url, const Member& member, QD_Conference_Events& events,
    const QD_Membership_Times& times) :
    broker_("the broker " + url.place()),
    events_(events),
    link_(url, make_owner(url.user), *this),
    membership_({link_.owner(), member.name, member.address},
        {[random = std::make_shared<std::random_device>()] { return (*random)(); },
            [own = member.address](uint32_t address) { return qd_is_reachable(own, address); },
            [this](const std::string& record) { link_.publish(record); }},
        events, times)
{
    link_.open();
}

void QD_Agent::ready() { membership_.ready(now_is()); }

void QD_Agent::leave()
{
    membership_.leave();
    link_.close();
}

void QD_Agent::link_up()
{
    if (std::exchange(lost_said_, false))
        events_.say(broker_, "is back");
    membership_.connect(now_is());
}

void QD_Agent::link_down(const std::string& why)
{
    membership_.disconnect();
    if (membership_.admitted()) {
        if (!std::exchange(lost_said_, true))
            events_.say(broker_, "is lost: " + why + "; it is tried again");
        return;
    }
    leave();
    events_.failed(broker_ + " cannot be used: " + why);
}

void QD_Agent::received(const std::string& topic, std::string_view payload)
{
    membership_.take(topic, payload, now_is());
}

QD_Clock::Time QD_Agent::deadline() const
{
    return std::min(link_.deadline(), membership_.deadline());
}

void QD_Agent::serve()
{
    link_.serve();
    const QD_Clock::Time now = now_is();
    membership_.keep_time(now);
    if (membership_.unanswered(now))
        link_.drop("it does not answer");
    if (membership_.over())
        link_.close();
}
