#include "conference/local/conference.h"

#include "conference/base/address_claim.h"
#include "conference/base/member_name.h"
#include "platform/net/host_address.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

constexpr uint32_t FIRST_ADDRESS = 0x7f000002;
constexpr uint32_t LAST_ADDRESS = 0x7f0000fe;

/// What a client would look for in the home directory that it does not have.
void keep_access(std::vector<std::string>& environment)
{
    const char* home = getenv("HOME");
    if (getenv("XAUTHORITY") == nullptr && home != nullptr)
        environment.push_back("XAUTHORITY=" + std::string(home) + "/.Xauthority");
}

}

std::string qd_parse_member(std::string_view text, QD_Member_Plan& plan)
{
    const size_t at = text.find('@');
    const std::string_view name = text.substr(0, at);
    std::string trouble = qd_name_trouble(name);
    uint32_t address = 0;
    if (trouble.empty() && at != std::string_view::npos) {
        address = qd_address_number(text.substr(at + 1));
        trouble = address == 0 ? "what follows the '@' is no IPv4 address" : "";
    }
    if (trouble.empty()) {
        plan.name_ = name;
        plan.address_ = address;
    }
    return trouble;
}

QD_Conference::QD_Conference(QD_Conference_Setup setup, std::ostream& out) :
    setup_(std::move(setup)),
    out_(out)
{
}

QD_Conference::Member* QD_Conference::find(std::string_view name)
{
    const auto found = std::find_if(
        members_.begin(), members_.end(), [&](const Member& m) { return m.name_ == name; });
    return found == members_.end() ? nullptr : &*found;
}

int QD_Conference::refuse(std::string_view whom, const std::string& why)
{
    out_ << whom << ": " << why << std::endl;
    return -1;
}

int QD_Conference::choose_address(Member& member, uint32_t wanted)
{
    if (wanted != 0) {
        const std::string text = qd_address_text(wanted);
        const std::string trouble = qd_address_trouble(wanted);
        if (!trouble.empty())
            return refuse(member.name_, text + " " + trouble);
        for (const Member& other : members_) {
            if (other.address_ == wanted)
                return refuse(member.name_, text + " is already the address of " + other.name_);
        }
        member.address_ = wanted;
        member.claim_ = qd_claim_address(wanted);
        return member.claim_ ? 0 : refuse(member.name_, text + " is in use on this machine");
    }
    for (uint32_t address = FIRST_ADDRESS; address <= LAST_ADDRESS; ++address) {
        member.address_ = address;
        member.claim_ = qd_claim_address(address);
        if (member.claim_)
            return 0;
    }
    return refuse(member.name_,
        "no address from " + qd_address_text(FIRST_ADDRESS) + " to " + qd_address_text(LAST_ADDRESS)
            + " is free");
}

std::string QD_Conference::directory_of(std::string_view name) const
{
    return setup_.directory_ + "/" + std::string(name);
}

QD_Launch QD_Conference::launch_of(const Member& member, const QD_Member_Plan& plan) const
{
    QD_Launch launch;
    launch.program_ = setup_.client_;
    if (!setup_.announced_) // people call from windows that nothing else tells apart
        launch.arguments_ = {"-title", "Quendal: " + member.name_};
    launch.arguments_.insert(
        launch.arguments_.end(), setup_.options_.begin(), setup_.options_.end());
    launch.arguments_.insert(launch.arguments_.end(), plan.options_.begin(), plan.options_.end());
    launch.directory_ = directory_of(member.name_);
    launch.log_ = launch.directory_ + "/log.txt";
    launch.environment_ = plan.environment_;
    launch.environment_.push_back("QD_LOCAL_ADDRESS=" + qd_address_text(member.address_));
    launch.environment_.push_back("HOME=" + launch.directory_);
    if (setup_.announced_)
        launch.environment_.emplace_back(QD_NO_CALLS);
    keep_access(launch.environment_);
    return launch;
}

int QD_Conference::join(const QD_Member_Plan& plan)
{
    if (const std::string trouble = qd_name_trouble(plan.name_); !trouble.empty())
        return refuse(plan.name_, trouble);
    if (find(plan.name_) != nullptr)
        return refuse(plan.name_, "there is a member of this name");

    Member member;
    member.name_ = plan.name_;
    if (choose_address(member, plan.address_) < 0)
        return -1;
    member.label_ = member.name_ + "@" + qd_address_text(member.address_);
    member.id_ = last_id_ + 1;
    member.client_ = std::make_unique<QD_Client>(setup_.bounds_);

    const QD_Launch launch = launch_of(member, plan);
    std::error_code error;
    std::filesystem::create_directories(launch.directory_, error);
    if (error)
        return refuse(member.label_, launch.directory_ + ": " + error.message());
    if (member.client_->start(launch) < 0)
        return refuse(member.label_, std::string("cannot be started: ") + strerror(errno));
    last_id_ = member.id_;
    members_.push_back(std::move(member));
    return 0;
}

int QD_Conference::leave(std::string_view name)
{
    Member* member = find(name);
    if (member == nullptr)
        return refuse(name, "there is no member of this name");
    withdraw(*member);
    member->client_->end();
    return 0;
}

void QD_Conference::list() const
{
    for (const Member& member : members_) {
        const QD_Client::State state = member.client_->state();
        out_ << member.id_ << "  " << member.label_
             << (state == QD_Client::LINKED            ? ""
                        : state == QD_Client::STARTING ? "  (starting)"
                                                       : "  (ending)")
             << "\n";
    }
    out_ << members_.size() << (members_.size() == 1 ? " member" : " members") << std::endl;
}

void QD_Conference::end()
{
    // Nobody is told of anybody's leaving: all leave.
    for (Member& member : members_) {
        member.announced_ = false;
        member.client_->end();
    }
}

void QD_Conference::insist()
{
    for (Member& member : members_)
        member.client_->insist();
}

bool QD_Conference::settled() const
{
    return std::none_of(members_.begin(), members_.end(),
        [](const Member& m) { return m.client_->state() == QD_Client::STARTING; });
}

void QD_Conference::announce(Member& newcomer)
{
    newcomer.announced_ = true;
    out_ << newcomer.label_ << " has joined" << std::endl;
    if (!setup_.announced_)
        return;
    const QD_Bytes own = qd_add_record(newcomer.address_, newcomer.id_, newcomer.name_);
    newcomer.client_->send(own); // first of all, so that it knows its own id
    for (Member& other : members_) {
        if (&other == &newcomer || !other.announced_)
            continue;
        newcomer.client_->send(qd_add_record(other.address_, other.id_, other.name_));
        other.client_->send(own);
    }
}

void QD_Conference::withdraw(Member& leaver)
{
    if (!leaver.announced_)
        return;
    leaver.announced_ = false;
    if (!setup_.announced_)
        return;
    const QD_Bytes record = qd_remove_record(leaver.address_, leaver.id_, leaver.name_);
    for (Member& other : members_) {
        if (&other != &leaver && other.announced_)
            other.client_->send(record);
    }
}

void QD_Conference::report(Member& member)
{
    const std::string& trouble = member.client_->trouble();
    if (trouble.empty()) {
        if (member.client_->state() == QD_Client::ENDED)
            out_ << member.label_ << " has left" << std::endl;
    } else if (!member.reported_) {
        member.reported_ = true;
        ++failures_;
        out_ << member.label_ << " " << trouble << "; see " << directory_of(member.name_)
             << "/log.txt" << std::endl;
    }
}

void QD_Conference::watch(std::vector<pollfd>& polled) const
{
    for (const Member& member : members_)
        member.client_->watch(polled);
}

QD_Clock::Time QD_Conference::deadline() const
{
    QD_Clock::Time first = QD_Clock::Time::max();
    for (const Member& member : members_)
        first = std::min(first, member.client_->deadline());
    return first;
}

void QD_Conference::serve()
{
    for (Member& member : members_) {
        const QD_Client::State before = member.client_->state();
        member.client_->serve();
        if (before == QD_Client::STARTING && member.client_->state() == QD_Client::LINKED)
            announce(member);
    }
    // A record that could not be written is one more that is out, and so on.
    for (bool changed = true; changed;) {
        changed = false;
        for (Member& member : members_) {
            if (member.announced_ && member.client_->state() >= QD_Client::ENDING) {
                withdraw(member);
                changed = true;
            }
        }
    }
    for (Member& member : members_)
        report(member);
    std::erase_if(
        members_, [](const Member& member) { return member.client_->state() == QD_Client::ENDED; });
}
