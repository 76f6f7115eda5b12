// The companion's join and host as processes, with clients that keep to their link.
#include "tests/support/broker.h"
#include "tests/support/loopback.h"
#include "tests/support/promised.h"
#include "tests/support/seat.h"

#include <gmock/gmock.h>
#include <regex>

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A companion with an address of its own on this machine.
std::unique_ptr<QD_Seat> seat(
    int host, std::vector<std::string> arguments, std::map<std::string, std::string> settings = {})
{
    auto seat = std::make_unique<QD_Seat>(qd_test_address(host));
    settings["QD_LOCAL_ADDRESS"] = seat->address();
    arguments.insert(arguments.begin(), QD_COMPANION);
    arguments.insert(arguments.end(), {"--client", QD_FAKE_CLIENT, "--dir", seat->file("")});
    seat->start(arguments, settings);
    return seat;
}

enum { ANNA, BO, KILLED, CLIENT_KILLED, CLIENT_FROZEN, FROZEN, MEMBERS };

/// Six that know one another.
class Join : public testing::Test {
protected:
    void SetUp() override
    {
        for (int i = 0; i < MEMBERS; ++i)
            seats_.push_back(seat(
                2 + i, {"join", "x", "--name", NAMES[i], "--broker", "mqtt://" + broker_.place()}));
        for (const auto& seat : seats_)
            for (int i = 0; i < MEMBERS; ++i)
                ASSERT_TRUE(seat->says(label(i) + " has joined\n")) << seat->said();
    }

    static std::string label(int of) { return NAMES[of] + ("@" + qd_test_address(2 + of)); }

    std::string said(int who) const { return seats_[static_cast<size_t>(who)]->said(); }

    pid_t companion(int of) const { return seats_[static_cast<size_t>(of)]->process().pid(); }
    pid_t client(int of) const
    {
        const std::string pid = std::to_string(companion(of));
        return atoi(qd_read_file("/proc/" + pid + "/task/" + pid + "/children").c_str());
    }

    /// What a member's client was told of each member that is there: by name, address and id.
    std::map<std::string, std::string> told(const QD_Seat& seat) const
    {
        // Command, address and id: ten bytes in hexadecimal digits, then the name.
        std::map<std::string, std::string> by_name;
        std::istringstream lines(qd_read_file(seat.file("payloads")));
        for (std::string line; std::getline(lines, line);)
            if (line.starts_with("3d"))
                by_name[line.substr(20)] = line.substr(2, 16);
            else
                by_name.erase(line.substr(20));
        return by_name;
    }

    static constexpr const char* NAMES[] = {"anna", "bo", "cleo", "dora", "emil", "fritz"};
    const QD_Test_Broker broker_;
    std::vector<std::unique_ptr<QD_Seat>> seats_;
};

TEST_F(Join, AllAreToldTheSameAndOfWhoeverDiesWithinASecondAndFreezesWithinTen)
{
    const QD_Seat& anna = *seats_[ANNA];
    const auto all = [](const auto& seat) { return qd_read_file(seat.file("payloads")); };
    for (const auto& seat : seats_) { // whose clients may not have read them yet
        ASSERT_TRUE(qd_wait_for([&] { return told(*seat).size() == MEMBERS; })) << all(*seat);
        EXPECT_EQ(told(*seat), told(anna));
    }
    EXPECT_EQ(all(anna).substr(20, 8), "616e6e61") << "of itself first";
    EXPECT_EQ(all(*seats_[BO]).substr(20, 4), "626f");

    const struct {
        int who;
        pid_t pid;
        int signal;
        std::chrono::seconds bound;
    } faults[] = {{KILLED, companion(KILLED), SIGKILL, 1s},
        {CLIENT_KILLED, client(CLIENT_KILLED), SIGKILL, 1s},
        {CLIENT_FROZEN, client(CLIENT_FROZEN), SIGSTOP, 10s},
        {FROZEN, companion(FROZEN), SIGSTOP, 10s}};
    for (const auto& fault : faults) {
        ::kill(fault.pid, fault.signal);
        const std::regex gone(label(fault.who) + " (has left\n|is gone)");
        EXPECT_TRUE(qd_wait_for(
            [&] {
                return std::regex_search(said(ANNA), gone) && std::regex_search(said(BO), gone);
            },
            qd_promised(fault.bound)))
            << label(fault.who);
    }
    EXPECT_TRUE(qd_wait_for([&] { return told(anna).size() == 2; })) << "the clients are told, too";
    EXPECT_EQ(seats_[CLIENT_KILLED]->process().wait(10s), 1);
    EXPECT_THAT(said(CLIENT_KILLED), HasSubstr("dora ended with signal 9"));

    ::kill(companion(FROZEN), SIGCONT);
    EXPECT_TRUE(qd_wait_for([&] { return told(anna).contains("667269747a"); })) << "back";
    EXPECT_THAT(said(FROZEN), Not(HasSubstr(label(ANNA) + " is gone"))) << "as it was stopped";
    EXPECT_EQ(seats_[ANNA]->end(), 0);
}

TEST(Host, OthersJoinByTheLineItPrintsAndNobodyElse)
{
    const auto host = seat(10, {"host", "daily", "--name", "anna"});
    ASSERT_TRUE(host->says("anna@" + host->address() + " has joined\n")) << host->said();
    const std::string said = host->said();
    const size_t at = said.find("mqtt+psk://");
    ASSERT_NE(at, std::string::npos) << said;
    const std::string url = said.substr(at, said.find('\n', at) - at);

    const auto guest = seat(11, {"join", "--name", "bo", "--broker", url});
    EXPECT_TRUE(guest->says("anna@" + host->address() + " has joined\n")) << guest->said();
    EXPECT_TRUE(host->says("bo@" + guest->address() + " has joined\n"));
    const std::string seen
        = qd_read_file("/proc/" + std::to_string(guest->process().pid()) + "/cmdline");
    const std::string key = url.substr(url.find("guest:") + 6, 64);
    EXPECT_THAT(seen, Not(HasSubstr(key)));
    EXPECT_THAT(seen, HasSubstr("mqtt+psk://guest:***"));

    std::string wrong = key;
    wrong[0] = wrong[0] == '0' ? '1' : '0';
    std::string wrong_url = url;
    wrong_url.replace(url.find(key), 64, "");
    const auto stranger
        = seat(12, {"join", "--name=eve", "--broker", wrong_url}, {{"QD_BROKER_PASSWORD", wrong}});
    EXPECT_EQ(stranger->process().wait(10s), 1);
    EXPECT_THAT(stranger->said(), HasSubstr("cannot be used: "));
    EXPECT_EQ(guest->end(), 0);
    EXPECT_EQ(host->process().end(SIGTERM), 0);
}

}
