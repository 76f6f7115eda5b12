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
        plan.name = name;
        plan.address = address;
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
        members_.begin(), members_.end(), [&](const Member& m) { return m.name == name; });
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
            return refuse(member.name, text + " " + trouble);
        for (const Member& other : members_) {
            if (other.address == wanted)
                return refuse(member.name, text + " is already the address of " + other.name);
        }
        member.address = wanted;
        member.claim = qd_claim_address(wanted);
        return member.claim ? 0 : refuse(member.name, text + " is in use on this machine");
    }
    for (uint32_t address = FIRST_ADDRESS; address <= LAST_ADDRESS; ++address) {
        member.address = address;
        member.claim = qd_claim_address(address);
        if (member.claim)
            return 0;
    }
    return refuse(member.name,
        "no address from " + qd_address_text(FIRST_ADDRESS) + " to " + qd_address_text(LAST_ADDRESS)
            + " is free");
}

std::string QD_Conference::directory_of(std::string_view name) const
{
    return setup_.directory + "/" + std::string(name);
}

QD_Launch QD_Conference::launch_of(const Member& member, const QD_Member_Plan& plan) const
{
    QD_Launch launch;
    launch.program = setup_.client;
    if (!setup_.announced) // people call from windows that nothing else tells apart
        launch.arguments = {"-title", "Quendal: " + member.name};
    launch.arguments.insert(launch.arguments.end(), setup_.options.begin(), setup_.options.end());
    launch.arguments.insert(launch.arguments.end(), plan.options.begin(), plan.options.end());
    launch.directory = directory_of(member.name);
    launch.log = launch.directory + "/log.txt";
    launch.environment = plan.environment;
    launch.environment.push_back("QD_LOCAL_ADDRESS=" + qd_address_text(member.address));
    launch.environment.push_back("HOME=" + launch.directory);
    if (setup_.announced)
        launch.environment.emplace_back(QD_NO_CALLS);
    keep_access(launch.environment);
    return launch;
}

int QD_Conference::join(const QD_Member_Plan& plan)
{
    if (const std::string trouble = qd_name_trouble(plan.name); !trouble.empty())
        return refuse(plan.name, trouble);
    if (find(plan.name) != nullptr)
        return refuse(plan.name, "there is a member of this name");

    Member member;
    member.name = plan.name;
    if (choose_address(member, plan.address) < 0)
        return -1;
    member.label = member.name + "@" + qd_address_text(member.address);
    member.id = last_id_ + 1;
    member.client = std::make_unique<QD_Client>(setup_.bounds);

    const QD_Launch launch = launch_of(member, plan);
    std::error_code error;
    std::filesystem::create_directories(launch.directory, error);
    if (error)
        return refuse(member.label, launch.directory + ": " + error.message());
    if (member.client->start(launch) < 0)
        return refuse(member.label, std::string("cannot be started: ") + strerror(errno));
    last_id_ = member.id;
    members_.push_back(std::move(member));
    return 0;
}

int QD_Conference::leave(std::string_view name)
{
    Member* member = find(name);
    if (member == nullptr)
        return refuse(name, "there is no member of this name");
    withdraw(*member);
    member->client->end();
    return 0;
}

void QD_Conference::list() const
{
    for (const Member& member : members_) {
        const QD_Client::State state = member.client->state();
        out_ << member.id << "  " << member.label
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
        member.announced = false;
        member.client->end();
    }
}

void QD_Conference::insist()
{
    for (Member& member : members_)
        member.client->insist();
}

bool QD_Conference::settled() const
{
    return std::none_of(members_.begin(), members_.end(),
        [](const Member& m) { return m.client->state() == QD_Client::STARTING; });
}

void QD_Conference::announce(Member& newcomer)
{
    newcomer.announced = true;
    out_ << newcomer.label << " has joined" << std::endl;
    if (!setup_.announced)
        return;
    const QD_Bytes own = qd_add_record(newcomer.address, newcomer.id, newcomer.name);
    newcomer.client->send(own); // first of all, so that it knows its own id
    for (Member& other : members_) {
        if (&other == &newcomer || !other.announced)
            continue;
        newcomer.client->send(qd_add_record(other.address, other.id, other.name));
        other.client->send(own);
    }
}

void QD_Conference::withdraw(Member& leaver)
{
    if (!leaver.announced)
        return;
    leaver.announced = false;
    if (!setup_.announced)
        return;
    const QD_Bytes record = qd_remove_record(leaver.address, leaver.id, leaver.name);
    for (Member& other : members_) {
        if (&other != &leaver && other.announced)
            other.client->send(record);
    }
}

void QD_Conference::report(Member& member)
{
    const std::string& trouble = member.client->trouble();
    if (trouble.empty()) {
        if (member.client->state() == QD_Client::ENDED)
            out_ << member.label << " has left" << std::endl;
    } else if (!member.reported) {
        member.reported = true;
        ++failures_;
        out_ << member.label << " " << trouble << "; see " << directory_of(member.name)
             << "/log.txt" << std::endl;
    }
}

void QD_Conference::watch(std::vector<pollfd>& polled) const
{
    for (const Member& member : members_)
        member.client->watch(polled);
}

QD_Clock::Time QD_Conference::deadline() const
{
    QD_Clock::Time first = QD_Clock::Time::max();
    for (const Member& member : members_)
        first = std::min(first, member.client->deadline());
    return first;
}

void QD_Conference::serve()
{
    for (Member& member : members_) {
        const QD_Client::State before = member.client->state();
        member.client->serve();
        if (before == QD_Client::STARTING && member.client->state() == QD_Client::LINKED)
            announce(member);
    }
    // A record that could not be written is one more that is out, and so on.
    for (bool changed = true; changed;) {
        changed = false;
        for (Member& member : members_) {
            if (member.announced && member.client->state() >= QD_Client::ENDING) {
                withdraw(member);
                changed = true;
            }
        }
    }
    for (Member& member : members_)
        report(member);
    std::erase_if(
        members_, [](const Member& member) { return member.client->state() == QD_Client::ENDED; });
}
