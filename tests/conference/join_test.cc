// The companion's join and host as processes, with clients that keep to their link.
#include "tests/support/broker.h"
#include "tests/support/loopback.h"
#include "tests/support/promised.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;

namespace {

/// A companion of its own address on this machine.
class Seat {
public:
    Seat(int host, const std::vector<std::string>& arguments,
        const std::map<std::string, std::string>& environment = {}) :
        address_(qd_test_address(host))
    {
        QD_Process::Set_Up set_up;
        set_up.out = dir_ / "said";
        set_up.errors = "&1";
        set_up.in_pipe = true;
        set_up.environment = environment;
        set_up.environment["QD_LOCAL_ADDRESS"] = address_;
        std::vector<std::string> command {QD_COMPANION};
        command.insert(command.end(), arguments.begin(), arguments.end());
        command.insert(command.end(), {"--client", QD_FAKE_CLIENT, "--dir", dir_.path()});
        process_.emplace(command, set_up);
    }

    std::string said() const { return qd_read_file(dir_ / "said"); }
    bool says(const std::string& text, std::chrono::milliseconds bound = 20s) const
    {
        return qd_wait_for([&] { return said().find(text) != std::string::npos; }, bound);
    }

    /// The client's process.
    pid_t client() const
    {
        const std::string task = "/proc/" + std::to_string(process_->pid());
        return atoi(
            qd_read_file(task + "/task/" + std::to_string(process_->pid()) + "/children").c_str());
    }

    std::string payloads() const { return qd_read_file(dir_ / "payloads"); }
    QD_Process& process() { return *process_; }
    std::string label(const std::string& name) const { return name + "@" + address_; }

private:
    const QD_Temp_Dir dir_;
    const std::string address_;
    std::optional<QD_Process> process_;
};

/// Three that know one another.
class Join : public testing::Test {
protected:
    void SetUp() override
    {
        const char* const names[] = {"anna", "bo", "cleo"};
        for (int i = 0; i < 3; ++i)
            seats_.push_back(std::make_unique<Seat>(2 + i,
                std::vector<std::string> {
                    "join", "x", "--name", names[i], "--broker", "mqtt://" + broker_.place()}));
        for (const auto& seat : seats_)
            for (size_t i = 0; i < 3; ++i)
                ASSERT_TRUE(seat->says(seats_[i]->label(names[i]) + " has joined\n"))
                    << seat->said();
    }

    /// Whether anna and bo are told that cleo is gone.
    bool gone(std::chrono::milliseconds bound) const
    {
        const std::string cleo = seats_[2]->label("cleo") + " ";
        const auto end = std::chrono::steady_clock::now() + bound;
        for (int i = 0; i < 2; ++i)
            if (!qd_wait_for(
                    [&] {
                        const std::string said = seats_[i]->said();
                        return said.find(cleo + "has left\n") != std::string::npos
                            || said.find(cleo + "is gone") != std::string::npos;
                    },
                    std::chrono::duration_cast<std::chrono::milliseconds>(
                        end - std::chrono::steady_clock::now())))
                return false;
        return true;
    }

    const QD_Test_Broker broker_;
    std::vector<std::unique_ptr<Seat>> seats_;
};

TEST_F(Join, EachClientIsToldOfItselfFirstAndOfTheSameMembers)
{
    // Command, address and id: ten bytes in hexadecimal digits, then the name.
    const auto ids = [](std::string payloads) {
        std::map<std::string, std::string> by_name;
        std::istringstream lines(payloads);
        for (std::string line; std::getline(lines, line);)
            by_name[line.substr(20)] = line.substr(0, 18);
        return by_name;
    };
    EXPECT_EQ(seats_[0]->payloads().substr(20, 8), "616e6e61");
    EXPECT_EQ(seats_[1]->payloads().substr(20, 4), "626f");
    EXPECT_EQ(ids(seats_[0]->payloads()).size(), 3u);
    EXPECT_EQ(ids(seats_[0]->payloads()), ids(seats_[1]->payloads()));
    EXPECT_EQ(ids(seats_[0]->payloads()), ids(seats_[2]->payloads()));
    seats_[0]->process().tell("end\n");
    EXPECT_EQ(seats_[0]->process().wait(10s), 0);
}

TEST_F(Join, AKilledCompanionIsGoneForAllWithinASecond)
{
    seats_[2]->process().end(SIGKILL);
    EXPECT_TRUE(gone(qd_promised(1s)));
    EXPECT_THAT(seats_[0]->payloads(), HasSubstr("\n3f"));
}

TEST_F(Join, AKilledClientIsGoneForAllWithinASecond)
{
    ::kill(seats_[2]->client(), SIGKILL);
    EXPECT_TRUE(gone(qd_promised(1s)));
    EXPECT_EQ(seats_[2]->process().wait(10s), 1);
    EXPECT_THAT(seats_[2]->said(), HasSubstr("cleo ended with signal 9"));
}

TEST_F(Join, AFrozenClientIsGoneForAllWithinTenSeconds)
{
    ::kill(seats_[2]->client(), SIGSTOP);
    EXPECT_TRUE(gone(qd_promised(10s)));
}

TEST_F(Join, AFrozenCompanionIsGoneForAllWithinTenSecondsAndComesBack)
{
    ::kill(seats_[2]->process().pid(), SIGSTOP);
    EXPECT_TRUE(gone(qd_promised(10s)));
    ::kill(seats_[2]->process().pid(), SIGCONT);
    const std::string again = seats_[2]->label("cleo") + " has joined\n";
    EXPECT_TRUE(qd_wait_for([&] {
        const std::string said = seats_[0]->said();
        return said.find(again) != said.rfind(again);
    }));
    EXPECT_THAT(seats_[2]->said(), Not(HasSubstr(" is gone"))) << "it has lost nobody itself";
}

TEST(Host, OthersJoinByTheLineItPrintsAndNobodyElse)
{
    Seat host(10, {"host", "daily", "--name", "anna"});
    ASSERT_TRUE(host.says("anna@" + qd_test_address(10) + " has joined\n")) << host.said();
    const std::string said = host.said();
    const size_t at = said.find("mqtt+psk://");
    ASSERT_NE(at, std::string::npos) << said;
    const std::string url = said.substr(at, said.find('\n', at) - at);

    Seat guest(11, {"join", "--name", "bo", "--broker", url});
    EXPECT_TRUE(guest.says("anna@" + qd_test_address(10) + " has joined\n")) << guest.said();
    EXPECT_TRUE(host.says("bo@" + qd_test_address(11) + " has joined\n"));
    const std::string seen
        = qd_read_file("/proc/" + std::to_string(guest.process().pid()) + "/cmdline");
    const std::string key = url.substr(url.find("guest:") + 6, 64);
    EXPECT_THAT(seen, Not(HasSubstr(key)));
    EXPECT_THAT(seen, HasSubstr("mqtt+psk://guest:***"));

    std::string wrong = key;
    wrong[0] = wrong[0] == '0' ? '1' : '0';
    std::string wrong_url = url;
    wrong_url.replace(url.find(key), 64, "");
    Seat stranger(
        12, {"join", "--name=eve", "--broker", wrong_url}, {{"QD_BROKER_PASSWORD", wrong}});
    EXPECT_EQ(stranger.process().wait(10s), 1);
    EXPECT_THAT(stranger.said(), HasSubstr("cannot be used: "));

    guest.process().tell("end\n");
    EXPECT_EQ(guest.process().wait(10s), 0);
    EXPECT_EQ(host.process().end(SIGTERM), 0);
}

}
