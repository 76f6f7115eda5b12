#include "conference/conference.h"

#include "conference/address_claim.h"
#include "conference/commands.h"
#include "tests/support/temp_dir.h"

#include <functional>
#include <gmock/gmock.h>

using namespace std::chrono_literals;
using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

/// Members are fake clients on 127.77.0.x; a member's name is the rule it breaks.
class Conference : public testing::Test {
protected:
    Conference()
    {
        setup_.directory_ = dir_.path();
        setup_.client_ = QD_FAKE_CLIENT;
        setup_.bounds_.probe_every_ = 50ms;
    }

    QD_Conference& conference()
    {
        if (!conference_)
            conference_ = std::make_unique<QD_Conference>(setup_, out_);
        return *conference_;
    }

    int join(const std::string& name, int host)
    {
        return conference().join({name, 0x7f4d0000U + static_cast<uint32_t>(host), {name}, {}});
    }

    /// Runs the conference until `done`. Fails after a bound that nothing comes near.
    void run_until(const std::function<bool()>& done)
    {
        const auto bound = std::chrono::steady_clock::now() + 30s;
        std::vector<pollfd> polled;
        while (!HasFatalFailure() && !done()) {
            ASSERT_LT(std::chrono::steady_clock::now(), bound) << out_.str();
            polled.clear();
            conference().watch(polled);
            ::poll(polled.data(), polled.size(), 5);
            conference().serve();
        }
    }

    void run_until_said(const std::string& text)
    {
        run_until([&] { return out_.str().find(text) != std::string::npos; });
    }

    void run_until_over()
    {
        run_until([&] { return conference().over(); });
    }

    std::vector<std::string> payloads(const std::string& name)
    {
        std::ifstream file(conference().directory_of(name) + "/payloads");
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);)
            lines.push_back(line);
        return lines;
    }

    void run_until_told(const std::string& name, size_t count)
    {
        run_until([&] { return payloads(name).size() >= count; });
    }

    const QD_Temp_Dir dir_;
    QD_Conference_Setup setup_;
    std::ostringstream out_;
    std::unique_ptr<QD_Conference> conference_;
};

TEST_F(Conference, TellsEachMemberOfItselfFirstAndThenOfTheOthers)
{
    int host = 1;
    for (const std::string name : {"anna", "single-bytes", "cleo"}) {
        ASSERT_EQ(join(name, ++host), 0);
        run_until_said(name + "@127.77.0." + std::to_string(host) + " has joined\n");
    }
    run_until_told("anna", 3);
    run_until_told("cleo", 3);
    ASSERT_EQ(conference().leave("single-bytes"), 0);
    run_until_told("anna", 4);
    conference().end();
    run_until_over();

    const char* anna = "3d7f4d00020000000104616e6e61";
    const char* second = "3d7f4d0003000000020c73696e676c652d6279746573";
    const char* cleo = "3d7f4d00040000000304636c656f";
    const char* second_left = "3f7f4d0003000000020c73696e676c652d6279746573";
    EXPECT_THAT(payloads("anna"), ElementsAre(anna, second, cleo, second_left, "3e"));
    EXPECT_THAT(payloads("single-bytes"), ElementsAre(second, anna, cleo, "3e"));
    EXPECT_THAT(payloads("cleo"), ElementsAre(cleo, anna, second, second_left, "3e"));
    EXPECT_EQ(conference().failures(), 0) << out_.str();
}

TEST_F(Conference, UnannouncedMembersAreToldNothingButTheEnd)
{
    setup_.announced_ = false;
    ASSERT_EQ(join("anna", 2), 0);
    ASSERT_EQ(join("bo", 3), 0);
    run_until([&] { return conference().settled(); });
    ASSERT_EQ(conference().leave("bo"), 0);
    run_until_said("bo@127.77.0.3 has left\n");
    conference().end();
    run_until_over();
    EXPECT_THAT(payloads("anna"), ElementsAre("3e"));
}

// Each one is reported with a line of its own, and whoever had heard of it hears
// that it is gone.
TEST_F(Conference, AClientThatGoesWrongIsReportedAndTakenOut)
{
    struct {
        const char* rule;
        const char* said;
        bool announced;
    } const cases[] = {
        {"exits-at-once", "ended before it had registered, with exit status 5", false},
        {"no-registration", "did not register within 0.7 s", false},
        {"half-a-registration", "did not register within 0.7 s", false},
        {"wrong-numbers", "registered with other numbers than it was given", false},
        {"crashes", "ended with signal 6 (Aborted)", true},
        {"closes-and-stays", "closed its link and did not end within 0.5 s", true},
        {"no-echo", "has not answered for 0.6 s", true},
        {"changed-echo", "returned an echo other than it was sent", true},
        {"impossible-length", "sent an event of an impossible length", true},
    };
    setup_.bounds_.registration_ = 700ms;
    setup_.bounds_.end_ = 500ms;
    setup_.bounds_.echo_ = 600ms;
    setup_.bounds_.probe_every_ = 300ms;
    ASSERT_EQ(join("anna", 2), 0);
    run_until_told("anna", 1);
    size_t told = 1;
    int host = 3;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.rule);
        out_.str("");
        ASSERT_EQ(join(c.rule, host), 0);
        const std::string label = std::string(c.rule) + "@127.77.0." + std::to_string(host);
        const std::string line
            = label + " " + c.said + "; see " + conference().directory_of(c.rule) + "/log.txt\n";
        run_until_said(line);
        EXPECT_EQ(out_.str(), (c.announced ? label + " has joined\n" : "") + line);
        told += c.announced ? 2 : 0;
        run_until_told("anna", told);
        if (c.announced) {
            EXPECT_THAT(payloads("anna").back(), testing::StartsWith("3f7f4d000"));
        }
        ++host;
    }
    EXPECT_EQ(conference().failures(), static_cast<int>(std::size(cases)));
    conference().end();
    run_until_over();
    EXPECT_EQ(payloads("anna").size(), told + 1);
}

TEST_F(Conference, AUserWhoLeavesIsNoFailure)
{
    ASSERT_EQ(join("leaves", 2), 0);
    run_until_over();
    EXPECT_EQ(out_.str(), "leaves@127.77.0.2 has joined\nleaves@127.77.0.2 has left\n");
    EXPECT_EQ(conference().failures(), 0);
}

TEST_F(Conference, AnotherProcessIsShutOutWithoutDisturbingTheClient)
{
    ASSERT_EQ(join("stranger", 2), 0);
    run_until_said("has joined");
    conference().end();
    run_until_over();
    EXPECT_EQ(conference().failures(), 0) << out_.str();
    EXPECT_THAT(qd_read_file(conference().directory_of("stranger") + "/log.txt"),
        testing::StartsWith("stranger shut out\n"));
}

TEST_F(Conference, InsistsWithAClientThatDoesNotEnd)
{
    setup_.bounds_.end_ = 300ms;
    setup_.bounds_.insist_ = 200ms;
    ASSERT_EQ(join("deaf", 2), 0);     // ends with SIGTERM
    ASSERT_EQ(join("stubborn", 3), 0); // needs SIGKILL
    ASSERT_EQ(join("ends-badly", 4), 0);
    for (const char* name : {"deaf", "stubborn", "ends-badly"})
        run_until_told(name, 3);
    const auto asked = std::chrono::steady_clock::now();
    conference().end();
    run_until_over();
    EXPECT_GE(std::chrono::steady_clock::now() - asked, 500ms);
    EXPECT_THAT(out_.str(), HasSubstr("deaf@127.77.0.2 did not end within 0.3 s; see"));
    EXPECT_THAT(out_.str(), HasSubstr("stubborn@127.77.0.3 did not end within 0.3 s; see"));
    EXPECT_THAT(out_.str(), HasSubstr("ends-badly@127.77.0.4 ended with exit status 9; see"));
    EXPECT_EQ(conference().failures(), 3);
}

// The kernel takes some hundred thousand bytes before our own queue fills.
TEST_F(Conference, AClientThatDoesNotReadIsTakenOutAndTheOthersGoOn)
{
    QD_Client client(setup_.bounds_);
    QD_Launch launch;
    launch.program_ = QD_FAKE_CLIENT;
    launch.arguments_ = {"does-not-read"};
    ASSERT_EQ(client.start(launch), 0);
    const auto serve_while = [&](QD_Client::State state) {
        for (int i = 0; i < 6000 && client.state() == state; ++i) {
            ::poll(nullptr, 0, 5);
            client.serve();
        }
    };
    serve_while(QD_Client::STARTING);
    const QD_Bytes record(60000, 'x');
    for (int i = 0; i < 10000 && client.state() == QD_Client::LINKED; ++i)
        client.send(record);
    EXPECT_EQ(client.trouble(), "does not read its link");
    client.insist();
    serve_while(client.state());
    EXPECT_EQ(client.state(), QD_Client::ENDED);
}

TEST_F(Conference, RefusesWhatCannotBeAMember)
{
    ASSERT_EQ(join("anna", 2), 0);
    QD_Commands commands(conference(), out_);
    struct {
        const char* typed;
        const char* answer;
    } const cases[] = {
        {"join anna", "anna: there is a member of this name\n"},
        {"join bo@127.77.0.2", "bo: 127.77.0.2 is already the address of anna\n"},
        {"join bo@10.0.0.1",
            "bo: 10.0.0.1 is not of this machine: take one of 127.0.0.1 to 127.255.255.254\n"},
        {"join bo@127.255.255.255", "bo: 127.255.255.255 is not the address of one member\n"},
        {"join bo@12.7", "bo@12.7: what follows the '@' is no IPv4 address\n"},
        {"join twentybyteslongname1", "twentybyteslongname1: the name is longer than 19 bytes\n"},
        {"join ../up",
            "../up: a name has no blanks and no '/', and does not begin with '.' or '-'\n"},
        {"leave bo", "bo: there is no member of this name\n"},
        {"join", "the commands are: join NAME[@ADDRESS], leave NAME, list, end\n"},
        {"list", "1  anna@127.77.0.2  (starting)\n1 member\n"},
    };
    for (const auto& c : cases) {
        out_.str("");
        commands.take(c.typed);
        EXPECT_EQ(out_.str(), "");
        commands.take(" \r\n");
        EXPECT_EQ(out_.str(), c.answer);
    }
    out_.str("");
    commands.take(std::string(1000000, 'x') + "\nlist\n");
    EXPECT_EQ(
        out_.str(), "a line is longer than 256 bytes\n1  anna@127.77.0.2  (starting)\n1 member\n");
}

TEST_F(Conference, ChoosesAFreeAddressAndGivesEachClientItsOwnSurroundings)
{
    const QD_Fd held = qd_claim_address(0x7f000002); // perhaps somebody else's: held all the same
    ASSERT_EQ(conference().join({"anna", 0, {}, {"QD_MIC=silence"}}), 0);
    run_until_told("anna", 1);
    conference().list();
    EXPECT_THAT(out_.str(), ContainsRegex("1  anna@127.0.0.([3-9]|[0-9]{2,3})\n"));

    // A second conference is refused an address that is taken in this one.
    std::ostringstream other_out;
    QD_Conference other(setup_, other_out);
    EXPECT_EQ(other.join({"bo", 0x7f000002, {}, {}}), -1);
    EXPECT_EQ(other_out.str(), "bo: 127.0.0.2 is in use on this machine\n");
    EXPECT_TRUE(std::filesystem::exists(conference().directory_of("anna") + "/log.txt"));
}

}
