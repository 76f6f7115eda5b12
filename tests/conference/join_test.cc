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

/// Three that know one another.
class Join : public testing::Test {
protected:
    void SetUp() override
    {
        const char* const names[] = {"anna", "bo", "cleo"};
        for (int i = 0; i < 3; ++i)
            seats_.push_back(seat(
                2 + i, {"join", "x", "--name", names[i], "--broker", "mqtt://" + broker_.place()}));
        for (const auto& seat : seats_)
            for (int i = 0; i < 3; ++i)
                ASSERT_TRUE(seat->says(names[i] + ("@" + qd_test_address(2 + i)) + " has joined\n"))
                    << seat->said();
    }

    std::string payloads(size_t of) const { return qd_read_file(seats_[of]->file("payloads")); }

    pid_t cleos_client() const
    {
        const std::string pid = std::to_string(seats_[2]->process().pid());
        return atoi(qd_read_file("/proc/" + pid + "/task/" + pid + "/children").c_str());
    }

    /// Whether anna and bo are told that cleo is gone.
    bool gone(std::chrono::milliseconds bound) const
    {
        const std::regex gone("cleo@[0-9.]* (has left\n|is gone)");
        return qd_wait_for(
            [&] {
                return std::regex_search(seats_[0]->said(), gone)
                    && std::regex_search(seats_[1]->said(), gone);
            },
            bound);
    }

    const QD_Test_Broker broker_;
    std::vector<std::unique_ptr<QD_Seat>> seats_;
};

TEST_F(Join, EachClientIsToldOfItselfFirstAndOfTheSameMembers)
{
    // Command, address and id: ten bytes in hexadecimal digits, then the name.
    const auto ids = [this](size_t of) {
        std::map<std::string, std::string> by_name;
        std::istringstream lines(payloads(of));
        for (std::string line; std::getline(lines, line);)
            if (line.size() > 20)
                by_name[line.substr(20)] = line.substr(0, 18);
        return by_name;
    };
    for (size_t client : {0, 1, 2}) // who may not have read them yet
        ASSERT_TRUE(qd_wait_for([&] { return ids(client).size() == 3; })) << payloads(client);
    EXPECT_EQ(payloads(0).substr(20, 8), "616e6e61");
    EXPECT_EQ(payloads(1).substr(20, 4), "626f");
    EXPECT_EQ(ids(0), ids(1));
    EXPECT_EQ(ids(0), ids(2));
    EXPECT_EQ(seats_[0]->end(), 0);
}

TEST_F(Join, AKilledCompanionIsGoneForAllWithinASecond)
{
    seats_[2]->process().end(SIGKILL);
    EXPECT_TRUE(gone(qd_promised(1s)));
    EXPECT_TRUE(qd_wait_for([&] { return payloads(0).find("\n3f") != std::string::npos; }));
}

TEST_F(Join, AKilledClientIsGoneForAllWithinASecond)
{
    ::kill(cleos_client(), SIGKILL);
    EXPECT_TRUE(gone(qd_promised(1s)));
    EXPECT_EQ(seats_[2]->process().wait(10s), 1);
    EXPECT_THAT(seats_[2]->said(), HasSubstr("cleo ended with signal 9"));
}

TEST_F(Join, AFrozenClientIsGoneForAllWithinTenSeconds)
{
    ::kill(cleos_client(), SIGSTOP);
    EXPECT_TRUE(gone(qd_promised(10s)));
}

TEST_F(Join, AFrozenCompanionIsGoneForAllWithinTenSecondsAndComesBack)
{
    ::kill(seats_[2]->process().pid(), SIGSTOP);
    EXPECT_TRUE(gone(qd_promised(10s)));
    ::kill(seats_[2]->process().pid(), SIGCONT);
    const std::string again = "cleo@" + seats_[2]->address() + " has joined\n";
    EXPECT_TRUE(qd_wait_for([&] {
        const std::string said = seats_[0]->said();
        return said.find(again) != said.rfind(again);
    }));
    EXPECT_THAT(seats_[2]->said(), Not(HasSubstr(" is gone"))) << "it has lost nobody itself";
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
