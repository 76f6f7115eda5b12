// What a stranger's stream changes in what is sent to whom and who is heard.
#include "media/application.h"
#include "signalling/listener.h"
#include "tests/support/session.h"
#include "tests/support/stream_pair.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wait.h"

#include <set>

namespace {

constexpr int PORT = 23457;
enum Host { US = 1, ANNA, BERNT, STRANGER = 9, VICTIM };

std::string number(uint32_t value)
{
    uint8_t bytes[4];
    qd_put_u32(bytes, value);
    return {bytes, bytes + 4};
}

std::string at(Host host) { return number(ntohl(qd_test_host(host))); }
std::string at(const char* address) { return number(ntohl(inet_addr(address))); }

std::string message(int tag, int handle, const std::string& host, const std::string& body = "")
{
    return qd_header_image(tag, handle, "x", host, body.size()) + body;
}

using Listed = std::vector<std::pair<uint32_t, std::string>>; // ids and addresses

std::string list(const Listed& members)
{
    std::string body = number(0) + number(static_cast<uint32_t>(members.size()));
    for (const auto& [id, host] : members)
        body += number(id) + std::string(20, '\0') + host;
    return body + std::string(27, '\0');
}

std::string invites(Host host) { return message(62, 0, at(host), list({})); }
std::string confirms(const Listed& members) { return message(4, 0, at(STRANGER), list(members)); }
const auto& announces = [](int id, const std::string& host) { return message(3, id, host); };
const auto& leaves = [](int id) { return message(1, id, at(STRANGER)); };
const auto& binds = [](int id) { return message(61, id, at(STRANGER)); };
std::string accepts() { return message(0, 0, at(STRANGER)); }
std::string rejects() { return message(2, 0, at(STRANGER)); }

class Ears : public QD_Application {
public:
    Ears() : QD_Application(PORT) {}
    int process_message(rtp_fix_header* header, char*, int) override
    {
        QD_Lock hold(mutex_);
        heard_.insert(static_cast<int>(header->ssrc));
        return 0;
    }
    std::set<int> heard()
    {
        QD_Lock hold(mutex_);
        return heard_;
    }

private:
    QD_Mutex mutex_;
    std::set<int> heard_ QD_GUARDED_BY(mutex_);
};

// A TCP socket at a host's address.
QD_Fd socket_at(Host host, uint16_t port)
{
    QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    ::setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    EXPECT_EQ(qd_bind(fd.get(), qd_test_host(host), port), 0);
    return fd;
}

struct Conference : QD_Session_Test {
    enum Scene { IDLE, ANNOUNCED, CALLED, ACCEPTED, CALLING };

    Conference()
    {
        EXPECT_EQ(listener.open(), 0);
        session_->set_reactor(&reactor);
    }
    ~Conference() override { reactor.clear(); }
    void TestBody() override {}

    void run()
    {
        do
            reactor.wait(-1, 5);
        while (reactor.dispatch() > 0);
    }
    QD_Fd stream(Host from)
    {
        QD_Fd fd = socket_at(from, 0);
        const sockaddr_in us {AF_INET, htons(5000), {qd_test_host(US)}, {}};
        EXPECT_EQ(::connect(fd.get(), reinterpret_cast<const sockaddr*>(&us), sizeof us), 0);
        return fd;
    }
    void say(const QD_Fd& fd, const std::string& bytes)
    {
        EXPECT_EQ(::send(fd.get(), bytes.data(), bytes.size(), 0), std::ssize(bytes));
        run();
    }

    void begin(Scene scene)
    {
        switch (scene) {
        case IDLE:
            break;
        case ANNOUNCED:
            announce();
            break;
        case CALLED:
        case ACCEPTED:
            friends = stream(ANNA);
            say(friends, invites(ANNA));
            if (scene == CALLED)
                confirm();
            break;
        case CALLING:
            const QD_Fd bernt = socket_at(BERNT, 5000);
            ::listen(bernt.get(), 1);
            EXPECT_EQ(session_->invite("user", qd_test_address(BERNT).c_str()), 0);
            friends.reset(::accept4(bernt.get(), nullptr, nullptr, SOCK_CLOEXEC));
            break;
        }
    }
    // How it goes on for those who mean well.
    void go_on(Scene scene)
    {
        if (scene == IDLE)
            announce();
        if (scene == ACCEPTED)
            confirm();
        if (scene == CALLING)
            say(friends, message(0, 0, at(BERNT)));
    }
    void announce()
    {
        for (int member : {US, ANNA, BERNT})
            join(member, member);
    }
    void confirm() { say(friends, confirms({{0, at(ANNA)}, {1, at(BERNT)}, {2, at(US)}})); }

    // "1>2": a datagram as 1 to host 2; "<3": member 3 is heard.
    std::string traffic()
    {
        Ears ears;
        EXPECT_EQ(ears.init(), 0);
        ears.send_data(15, "x", 1);
        std::string all;
        for (Host host : {US, ANNA, BERNT, STRANGER, VICTIM}) {
            std::string packet;
            while (host != US && !(packet = peers.at(host).receive(2)).empty())
                all += std::to_string(static_cast<uint8_t>(packet[11])) + ">" + std::to_string(host)
                    + " ";
        }
        std::set<int> due; // come last, so that the others have come before
        for (const auto& member : ears.get_roster()->entries)
            due.insert(member.id);
        for (bool is_due : {false, true})
            for (int id = 0; id < 50; ++id)
                if (due.contains(id) == is_due)
                    peers.at(ANNA).send(std::string("\x80\x0f\0\5\0\0\0\6", 8)
                            + number(static_cast<uint32_t>(id)) + "xx",
                        qd_test_host(US));
        qd_wait_for([&] { return ears.heard().size() >= due.size(); });
        ears.close();
        for (int id : ears.heard())
            if (id != session_->get_local_id())
                all += "<" + std::to_string(id) + " ";
        return all;
    }

    Reactor reactor;
    QD_Listener listener {&reactor};
    QD_Fd friends;
    std::map<Host, QD_Udp_Peer> peers = [] {
        std::map<Host, QD_Udp_Peer> all;
        for (Host host : {ANNA, BERNT, STRANGER, VICTIM})
            all.try_emplace(host, qd_test_host(host), PORT);
        return all;
    }();
};

using Messages = std::vector<std::string>;

struct Case {
    const char* why;
    Conference::Scene scene;
    Messages says;
    const char* before;
    const char* after;
    const char* in_the_end = nullptr; // once it has gone on and the stranger's stream has ended
};

const char* const THREE = "1>2 1>3 <2 <3 ";
const char* const CALL = "2>2 2>3 <0 <1 ";

const Case CASES[] = {
    // Who is told of members by the framework.
    {"a member is put in a member's place", Conference::ANNOUNCED,
        {announces(2, at(STRANGER)), announces(2, at(ANNA))}, THREE, THREE},
    {"or in ours", Conference::ANNOUNCED, {announces(1, at(STRANGER)), announces(7, at(US))}, THREE,
        THREE},
    {"addresses of nobody end what is sent", Conference::ANNOUNCED,
        {announces(0, at("255.255.255.255")), announces(0, at("127.255.255.255")),
            announces(0, at("240.0.0.1")), announces(0, at("224.0.0.1")),
            announces(0, at("0.0.0.1")), announces(0, at("198.51.100.1"))},
        THREE, THREE},
    {"one packet is many for a member", Conference::ANNOUNCED,
        {announces(7, at(ANNA)), announces(8, at(ANNA))}, THREE, THREE},
    {"and for the stranger itself", Conference::ANNOUNCED,
        {announces(7, at(STRANGER)), announces(8, at(STRANGER)), announces(7, at(STRANGER))}, THREE,
        "1>2 1>3 1>9 <2 <3 <7 ", THREE},
    {"it goes with all that it has announced", Conference::ANNOUNCED,
        {announces(7, at(STRANGER)), announces(8, at(VICTIM))}, THREE,
        "1>2 1>3 1>9 1>10 <2 <3 <7 <8 ", THREE},
    {"members are taken out", Conference::ANNOUNCED,
        {leaves(2), leaves(1), binds(3), binds(1), accepts(), rejects()}, THREE, THREE},
    {"a call in a conference", Conference::ANNOUNCED,
        {invites(STRANGER), // who is answered at once
            confirms({{0, at(STRANGER)}, {2, at(VICTIM)}, {5, at("255.255.255.255")}, {6, at(US)},
                {7, at(ANNA)}, {8, at(STRANGER)}, {0, at(VICTIM)}, {40, at(US)}})},
        THREE, "1>2 1>3 1>9 <0 <2 <3 ", THREE},
    {"a call as somebody else", Conference::ANNOUNCED,
        {invites(US), confirms({{0, at(US)}, {40, at(VICTIM)}})}, THREE, THREE},
    {"a list without its sender", Conference::ANNOUNCED,
        {invites(STRANGER), confirms({{40, at(VICTIM)}})}, THREE, THREE},
    // Those who call one another.
    {"a friend's record is taken over", Conference::CALLED,
        {announces(0, at(STRANGER)), announces(0, at(ANNA)), binds(0), binds(1)}, CALL, CALL},
    {"or removed, or ours", Conference::CALLED,
        {leaves(0), leaves(1), leaves(2), binds(2), announces(2, at(STRANGER))}, CALL, CALL},
    {"a second confirmation, and answers to no call", Conference::CALLED,
        {confirms({{0, at(STRANGER)}, {5, at(US)}}), accepts(), rejects()}, CALL, CALL},
    {"confirmed by another", Conference::ACCEPTED,
        {confirms({{0, at(ANNA)}, {1, at(STRANGER)}, {5, at(US)}})}, "", "", CALL},
    {"a place is taken in advance", Conference::ACCEPTED,
        {announces(0, at(STRANGER)), announces(7, at(ANNA)), announces(8, at(BERNT))}, "",
        "255>2 255>3 255>9 <0 <7 <8 ", CALL},
    {"answered by another", Conference::CALLING, {accepts()}, "", "", "0>3 <1 "},
    {"refused by another", Conference::CALLING, {rejects()}, "", "", "0>3 <1 "},
    {"a conference is expected", Conference::IDLE,
        {announces(2, at(VICTIM)), announces(7, at(ANNA)), announces(1, at(STRANGER))}, "",
        "255>2 255>9 255>10 <1 <2 <7 ", THREE},
    {"or a call comes before", Conference::IDLE,
        {invites(STRANGER), confirms({{2, at(STRANGER)}, {3, at(US)}})}, "", "3>9 <2 ", THREE},
};

}

TEST(Strangers, OneMessageNeitherMutesNorDivertsNorHijacksNorAmplifies)
{
    for (const Case& c : CASES) {
        SCOPED_TRACE(c.why);
        Conference conference;
        conference.begin(c.scene);
        EXPECT_EQ(conference.traffic(), c.before);
        QD_Fd stranger = conference.stream(STRANGER);
        for (const std::string& message : c.says)
            conference.say(stranger, message);
        EXPECT_EQ(conference.traffic(), c.after);
        conference.go_on(c.scene);
        stranger.reset();
        conference.run();
        EXPECT_EQ(conference.traffic(), c.in_the_end != nullptr ? c.in_the_end : c.before);
    }
}
