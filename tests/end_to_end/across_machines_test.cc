// Conferences of several hosts, each with an address of its own and the usual ports.
#include "tests/support/broker.h"
#include "tests/support/network.h"
#include "tests/support/seat.h"
#include "tests/support/signal_math.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <gmock/gmock.h>
#include <sstream>

using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;

namespace {

constexpr int BROKER_HOST = 254;
constexpr int HOSTS = 4;

/// None is near a sum or difference of multiples of the others, which a loud mix has, too.
int tone_of(int host)
{
    constexpr int TONES[] = {0, 2171, 925, 2331, 2051};
    return TONES[host];
}

/// How many windows on the screen are called so.
int windows_named(const std::string& title)
{
    return atoi(qd_output("xdotool search --onlyvisible --name '^" + title + "$' | wc -l").c_str());
}

/// One host's companion, started with the broker's URL and nothing else.
class Seat : public QD_Seat {
public:
    Seat(const QD_Test_Network& network, int host, const std::string& name,
        const std::string& client) :
        QD_Seat(QD_Test_Network::address(host)),
        label_(name + "@" + address()),
        host_(host)
    {
        start(network.at(host,
                  {QD_BUILD_DIR "/quendal-conference", "join", "standup", "--name", name,
                      "--broker", "mqtt://" + QD_Test_Network::address(BROKER_HOST), "--dir",
                      file(""), "--client", client, "--", "-xrm", "*toggle.set: True"}),
            {{"HOME", file("")}, {"QD_MIC", "tone:" + std::to_string(tone_of(host))},
                {"QD_SPEAKER", "file:" + file("")}, {"QD_CAMERA", "testcard"}});
    }

    const std::string& label() const { return label_; }

    /// The members as this one lists them: by label, the id.
    std::map<std::string, uint32_t> list()
    {
        const size_t before = said().size();
        process().tell("list\n");
        qd_wait_for([&] { return said().find(" member", before) != std::string::npos; });
        std::map<std::string, uint32_t> members;
        std::istringstream lines(said().substr(before));
        std::string label;
        for (uint32_t id = 0; lines >> id >> label;)
            if (label.find('@') != std::string::npos)
                members[label] = id;
        return members;
    }

    /// Whether the tones of all hosts have been played here, but not its own.
    bool heard_all_others() const
    {
        const auto mix = qd_read_wav(file("mix.wav"));
        bool right = true;
        for (int host = 1; host <= HOSTS; ++host)
            right = right && (qd_amplitude(mix, tone_of(host)) > 400) == (host != host_);
        return right;
    }
    std::string log() const { return qd_read_file(file("log.txt")); }

private:
    const std::string label_;
    const int host_;
};

class AcrossMachines : public testing::Test {
protected:
    AcrossMachines() :
        network_(HOSTS),
        broker_("allow_anonymous true\n", QD_Test_Network::address(BROKER_HOST),
            [this](std::vector<std::string> command) { return network_.at(0, std::move(command)); })
    {
    }

    void SetUp() override
    {
        ASSERT_TRUE(network_.good())
            << "this test makes network namespaces: it needs root and the program ip";
    }

    Seat& join(
        int host, const std::string& name, const std::string& client = QD_BUILD_DIR "/quendal")
    {
        seats_.push_back(std::make_unique<Seat>(network_, host, name, client));
        return *seats_.back();
    }

    /// Everybody is told of everybody, itself included.
    void gather() const
    {
        for (const auto& seat : seats_)
            for (const auto& other : seats_)
                ASSERT_TRUE(seat->says(other->label() + " has joined\n"))
                    << seat->said() << seat->log();
    }

    QD_X_Server x_server_;
    QD_Test_Network network_;
    QD_Test_Broker broker_;
    std::vector<std::unique_ptr<Seat>> seats_;
};

TEST_F(AcrossMachines, EverybodyHearsAndSeesEverybodyWhoeverComesAndGoes)
{
    join(1, "anna");
    join(2, "bernt");
    join(3, "chiara");
    gather();
    const auto three = seats_[0]->list();
    ASSERT_EQ(three.size(), 3u) << seats_[0]->said();

    Seat& late = join(4, "dmitri");
    gather();
    const auto four = late.list();
    EXPECT_EQ(four.size(), 4u);
    EXPECT_THAT(four, IsSupersetOf(three));
    for (const auto& seat : seats_)
        EXPECT_EQ(seat->list(), four) << seat->said();

    // Everybody's picture on everybody's screen, under the right name.
    const auto windows = [](const std::string& label, int count) {
        return qd_wait_for([&] { return windows_named(label) == count; }, std::chrono::seconds(20));
    };
    for (const auto& seat : seats_)
        EXPECT_TRUE(windows(seat->label(), HOSTS)) << seat->label();
    for (const auto& seat : seats_)
        EXPECT_TRUE(qd_wait_for([&] { return seat->heard_all_others(); })) << seat->label();

    EXPECT_EQ(late.end(), 0) << late.said();
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(seats_[i]->says("dmitri@10.77.0.4 has left\n"));
        EXPECT_EQ(seats_[i]->list(), three);
    }
    EXPECT_TRUE(windows(late.label(), 0));
    EXPECT_TRUE(windows("anna@10.77.0.1", 3));
    for (size_t i = 0; i < 3; ++i)
        EXPECT_EQ(seats_[i]->end(), 0) << seats_[i]->said();
    // Each one's figures name those who were still there when it ended.
    const auto figures = [&](const Seat& of) {
        return "video " + of.label() + ", id=" + std::to_string(three.at(of.label()))
            + ": received ";
    };
    EXPECT_THAT(seats_[0]->log(), HasSubstr(figures(*seats_[1])));
    EXPECT_THAT(seats_[0]->log(), HasSubstr(figures(*seats_[2])));
    EXPECT_THAT(seats_[1]->log(), HasSubstr(figures(*seats_[2])));
}

TEST_F(AcrossMachines, AHostThatIsCutOffIsGoneWithinTenSecondsAndComesBackAsItself)
{
    const char* const names[] = {"anna", "bernt", "chiara"};
    for (int i = 0; i < 3; ++i)
        join(i + 1, names[i], QD_BUILD_DIR "/fake_client");
    gather();
    const auto before = seats_[0]->list();
    ASSERT_EQ(before.size(), 3u);

    ASSERT_TRUE(network_.cut(3));
    const auto cut = std::chrono::steady_clock::now();
    for (size_t i = 0; i < 2; ++i)
        EXPECT_TRUE(seats_[i]->says("chiara@10.77.0.3 is gone"));
    EXPECT_LT(std::chrono::steady_clock::now() - cut, std::chrono::seconds(10));
    EXPECT_EQ(seats_[1]->list().size(), 2u);
    EXPECT_TRUE(seats_[2]->says("the broker 10.77.0.254:1883 is lost"));
    EXPECT_EQ(seats_[2]->list(), before) << "who is cut off keeps the others";

    ASSERT_TRUE(network_.heal(3));
    EXPECT_TRUE(seats_[2]->says("the broker 10.77.0.254:1883 is back"));
    for (const auto& seat : seats_)
        EXPECT_TRUE(qd_wait_for([&] { return seat->list() == before; })) << seat->said();
    EXPECT_THAT(seats_[2]->said(), Not(HasSubstr("is gone")));
}

}
