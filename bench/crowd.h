// Many agents without clients in one process, over real connections to a broker.
#pragma once

#include "conference/broker/agent.h"

#include <algorithm>
#include <functional>
#include <memory>

/// One of them.
class QD_Crowd_Member : private QD_Conference_Events {
public:
    QD_Crowd_Member(const QD_Broker_Url& url, const std::string& name, uint32_t address) :
        agent(url, {name, address}, *this)
    {
    }

    /// How many members it knows of, itself included.
    size_t members() const { return in_ ? agent.membership().others().size() + 1 : 0; }

    QD_Agent agent;
    std::string failure;

private:
    void admitted(const QD_Presence&) override { agent.ready(); }
    void came(const QD_Presence&) override { in_ = true; }
    void went(const QD_Presence&, const char*) override {}
    void say(const std::string&, const std::string&) override {}
    void failed(const std::string& why) override { failure = why; }

    bool in_ = false;
};

/// Drives them all from one thread.
class QD_Crowd {
public:
    /// A new member at 127.A.B.C made of its number.
    void join(const std::string& url, const std::string& name)
    {
        QD_Broker_Url read;
        QD_Broker_Url::parse(url, read);
        const auto number = static_cast<uint32_t>(members.size());
        members.push_back(std::make_unique<QD_Crowd_Member>(
            read, name, 0x7f200000 + number / 200 * 256 + number % 200 + 1));
    }

    /// Whether all know of so many members.
    bool all_know(size_t count) const
    {
        return std::all_of(members.begin(), members.end(),
            [&](const auto& member) { return member->members() == count; });
    }

    /// Runs until `done`, at most so long. Returns whether it came to be.
    bool run_until(const std::function<bool()>& done,
        std::chrono::milliseconds bound = std::chrono::seconds(20))
    {
        const auto end = QD_Clock::real().now() + bound;
        while (!done()) {
            if (QD_Clock::real().now() >= end)
                return false;
            pass();
        }
        return true;
    }
    void run_for(std::chrono::milliseconds time)
    {
        run_until([] { return false; }, time);
    }

    std::vector<std::unique_ptr<QD_Crowd_Member>> members;

private:
    void pass()
    {
        polled_.clear();
        owners_.clear();
        for (auto& member : members) {
            member->agent.watch(polled_);
            owners_.resize(polled_.size(), member.get());
        }
        ::poll(polled_.data(), polled_.size(), 5);
        for (size_t i = 0; i < polled_.size(); ++i)
            if (polled_[i].revents != 0)
                owners_[i]->agent.serve();
        const auto now = QD_Clock::real().now();
        for (auto& member : members)
            if (member->agent.deadline() <= now)
                member->agent.serve();
    }

    std::vector<pollfd> polled_;
    std::vector<QD_Crowd_Member*> owners_;
};
