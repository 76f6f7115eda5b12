// Many agents without clients in one process, over real connections to a broker.
#pragma once

#include "conference/address_claim.h"
#include "conference/agent.h"

#include <functional>
#include <memory>

/// One of them, and what it was told.
class QD_Crowd_Member : private QD_Conference_Events {
public:
    QD_Crowd_Member(const QD_Broker_Url& url, const std::string& name, uint32_t address) :
        agent_(url, {name, address}, *this)
    {
    }

    /// How many members it knows of, itself included.
    size_t members() const { return in_ ? agent_.membership().others().size() + 1 : 0; }

    QD_Agent agent_;
    std::vector<std::string> told_; // "+anna@127.0.0.2", "-..."
    std::vector<std::string> said_;
    std::string failure_;
    QD_Clock::Time newest_ {}; // when it was told of somebody last

private:
    void admitted(const QD_Presence&) override { agent_.ready(); }
    void came(const QD_Presence& member) override
    {
        in_ = true;
        newest_ = QD_Clock::real().now();
        told_.push_back("+" + member.label());
    }
    void went(const QD_Presence& member, const char*) override
    {
        told_.push_back("-" + member.label());
    }
    void say(const std::string& whom, const std::string& what) override
    {
        said_.push_back(whom + " " + what);
    }
    void failed(const std::string& why) override { failure_ = why; }

    bool in_ = false;
};

/// Drives them all from one thread. A member that is reset is gone as a process that was killed.
class QD_Crowd {
public:
    /// A new member at 127.A.B.C made of its number.
    QD_Crowd_Member& join(const QD_Broker_Url& url, const std::string& name)
    {
        const auto number = static_cast<uint32_t>(members_.size());
        members_.push_back(std::make_unique<QD_Crowd_Member>(
            url, name, 0x7f200000 + number / 200 * 256 + number % 200 + 1));
        return *members_.back();
    }
    QD_Crowd_Member& join(const std::string& url, const std::string& name)
    {
        QD_Broker_Url read;
        QD_Broker_Url::parse(url, read);
        return join(read, name);
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

    std::vector<std::unique_ptr<QD_Crowd_Member>> members_;

private:
    void pass()
    {
        polled_.clear();
        owners_.clear();
        for (auto& member : members_) {
            if (member)
                member->agent_.watch(polled_);
            owners_.resize(polled_.size(), member.get());
        }
        ::poll(polled_.data(), polled_.size(), 5);
        for (size_t i = 0; i < polled_.size(); ++i)
            if (polled_[i].revents != 0)
                owners_[i]->agent_.serve();
        const auto now = QD_Clock::real().now();
        for (auto& member : members_)
            if (member && member->agent_.deadline() <= now)
                member->agent_.serve();
    }

    std::vector<pollfd> polled_;
    std::vector<QD_Crowd_Member*> owners_;
};
