#include "conference/broker/join.h"

#include "conference/base/loop.h"
#include "framework/link/link_wire.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

QD_Join::QD_Join(QD_Join_Setup setup, std::ostream& out, int input) :
    setup_(std::move(setup)),
    out_(out),
    signals_(qd_block_ending_signals()),
    input_(input),
    lines_(out, [this](std::string_view line) { execute(line); }),
    client_(setup_.bounds),
    agent_(setup_.broker, {setup_.name, setup_.address}, *this, setup_.times)
{
}

int QD_Join::run()
{
    std::vector<pollfd> polled;
    while (!agent_.over() || client_.state() != QD_Client::ENDED) {
        polled.assign({{signals_.get(), POLLIN, 0}, {input_, POLLIN, 0}});
        agent_.watch(polled);
        client_.watch(polled);
        ::poll(polled.data(), polled.size(),
            qd_milliseconds_until(std::min(agent_.deadline(), client_.deadline())));
        if (polled[0].revents != 0)
            read_signal();
        if (polled[1].revents != 0)
            read_input();
        serve();
    }
    return trouble_ ? -1 : 0;
}

void QD_Join::serve()
{
    agent_.serve();
    client_.serve();
    if (client_.state() == QD_Client::LINKED && !std::exchange(linked_, true))
        agent_.ready();
    if (started_ && client_.state() >= QD_Client::ENDING && !ending_)
        end();
    if (started_ && client_.state() == QD_Client::ENDED && std::exchange(started_, false)) {
        const std::string& trouble = client_.trouble();
        trouble_ = trouble_ || !trouble.empty();
        say(setup_.name,
            trouble.empty() ? "has left" : trouble + "; see " + setup_.directory + "/log.txt");
    }
}

void QD_Join::admitted(const QD_Presence& /*self*/)
{
    if (started_ || ending_)
        return;
    QD_Launch launch;
    launch.program = setup_.client;
    launch.arguments = setup_.options;
    launch.directory = setup_.directory;
    launch.log = setup_.directory + "/log.txt";
    launch.environment = {QD_NO_CALLS};
    started_ = client_.start(launch) == 0;
    if (!started_) {
        trouble_ = true;
        say(setup_.name, std::string("cannot be started: ") + strerror(errno));
        end();
    }
}

void QD_Join::came(const QD_Presence& member)
{
    say(member.label(), "has joined");
    client_.send(qd_add_record(member.address, member.id, member.name));
}

void QD_Join::went(const QD_Presence& member, const char* how)
{
    say(member.label(), how);
    client_.send(qd_remove_record(member.address, member.id, member.name));
}

void QD_Join::say(const std::string& whom, const std::string& what)
{
    out_ << whom << " " << what << std::endl;
}

void QD_Join::failed(const std::string& why)
{
    trouble_ = true;
    say(setup_.name, "cannot be in the conference: " + why);
    end();
}

void QD_Join::end()
{
    ending_ = true;
    agent_.leave();
    client_.end();
}

void QD_Join::read_signal()
{
    if (!qd_take_signal(signals_))
        return;
    told_to_end_ = true;
    if (ending_)
        client_.insist();
    else
        end();
}

void QD_Join::read_input()
{
    char typed[512];
    const ssize_t got = ::read(input_, typed, sizeof typed);
    if (got <= 0)
        input_ = -1; // it goes on without a keyboard
    else
        lines_.take({typed, static_cast<size_t>(got)});
}

void QD_Join::execute(std::string_view line)
{
    if (line == "list")
        list();
    else if (line == "end")
        told_to_end_ = true;
    else
        out_ << "the commands are: list, end" << std::endl;
    if (told_to_end_ && !ending_)
        end();
}

void QD_Join::list() const
{
    const QD_Membership& membership = agent_.membership();
    const auto others = membership.others();
    const QD_Presence& self = membership.self();
    out_ << self.id << "  " << self.label() << (linked_ ? "" : "  (starting)") << "\n";
    for (const auto& [owner, member] : others)
        out_ << member.id << "  " << member.label() << "\n";
    out_ << others.size() + 1 << (others.empty() ? " member" : " members") << std::endl;
}
