// Conferences on this machine. A member's name is the rule that its client breaks.
#include "conference/base/address_claim.h"
#include "tests/conference/seat.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;

namespace {

/// A client that runs these lines first.
std::string script(const QD_Temp_Dir& dir, const std::string& lines)
{
    qd_write_file(dir / "client", "#!/bin/sh\n" + lines + "exec " QD_FAKE_CLIENT " \"$@\"\n");
    std::filesystem::permissions(dir / "client", std::filesystem::perms::owner_all);
    return dir / "client";
}

/// Whether the process ends before long.
bool ends(const std::string& pid)
{
    return qd_wait_for([&] { return qd_read_file("/proc/" + pid + "/cmdline").empty(); });
}

TEST(Conference, TellsEachMemberOfItselfFirstAndThenOfTheOthers)
{
    Seat seat("run", {"anna@127.77.0.2"});
    ASSERT_TRUE(seat.says("anna@127.77.0.2 has joined\n")) << seat.said();
    seat.process().tell("join single-bytes@127.77.0.3\n");
    ASSERT_TRUE(seat.says("single-bytes@127.77.0.3 has joined\n")) << seat.said();
    seat.process().tell("join leaves@127.77.0.4\n");
    ASSERT_TRUE(seat.says("leaves@127.77.0.4 has left\n")) << seat.said();
    EXPECT_EQ(seat.end(), 0);

    const std::string anna = "3d7f4d00020000000104616e6e61\n";
    const std::string second = "3d7f4d0003000000020c73696e676c652d6279746573\n";
    const std::string rest
        = "3d7f4d000400000003066c6561766573\n3f7f4d000400000003066c6561766573\n3e\n";
    EXPECT_EQ(qd_read_file(seat.file("anna/payloads")), anna + second + rest);
    EXPECT_EQ(qd_read_file(seat.file("single-bytes/payloads")), second + anna + rest);
}

TEST(Conference, UnannouncedMembersAreToldOfNobody)
{
    const QD_Temp_Dir dir;
    Seat seat("run",
        {"--unannounced", "anna@127.77.0.5", "bo@127.77.0.6", "--client",
            script(dir, "echo ${QD_CALLS-all}\n")});
    ASSERT_TRUE(seat.says("anna@127.77.0.5 has joined\n")) << seat.said();
    ASSERT_TRUE(seat.says("bo@127.77.0.6 has joined\n")) << seat.said();
    EXPECT_EQ(seat.end(), 0);
    EXPECT_EQ(qd_read_file(seat.file("anna/payloads")), "3e\n");
    EXPECT_EQ(qd_read_file(seat.file("anna/log.txt")), "all\n") << "they call one another";
}

// Each one is reported with a line of its own, and whoever had heard of it hears
// that it is gone.
TEST(Conference, AClientThatGoesWrongIsReportedAndTakenOut)
{
    const std::map<std::string, std::string> cases {
        {"exits-at-once", "ended before it had registered, with exit status 5"},
        {"no-registration", "did not register within 5 s"},
        {"wrong-numbers", "registered with other numbers than it was given"},
        {"crashes", "ended with signal 6 (Aborted)"},
        {"closes-and-stays", "closed its link and did not end within 10 s"},
        {"no-echo", "has not answered for 5 s"},
        {"changed-echo", "returned an echo other than it was sent"},
        {"impossible-length", "sent an event of an impossible length"},
        {"stubborn", "did not end within 10 s"},
    };
    Seat seat("run", {"single-bytes"});
    ASSERT_TRUE(seat.says(" has joined\n"));
    for (const auto& [rule, said] : cases)
        seat.process().tell("join " + rule + "\n");
    ASSERT_TRUE(seat.says(" has joined\n", "\nstubborn@")) << seat.said();
    seat.process().tell("leave stubborn\n");
    for (const auto& [rule, said] : cases)
        EXPECT_TRUE(seat.says(said + "; see " + seat.file(rule) + "/log.txt\n", "\n" + rule + "@"))
            << seat.said();
    EXPECT_EQ(seat.end(), 1);
    EXPECT_EQ(seat.told("single-bytes/payloads").size(), 7u + 6u + 1u);
}

TEST(Conference, ALogBeginsAfreshBeyondItsBound)
{
    const QD_Temp_Dir dir;
    Seat seat("run", {"anna", "--client", script(dir, "head -c 17000000 /dev/zero; echo rest\n")});
    ASSERT_TRUE(seat.says(" has joined\n")) << seat.said();
    EXPECT_EQ(std::filesystem::file_size(seat.file("anna/log.txt")), 17000005u);
    EXPECT_TRUE(
        qd_wait_for([&] { return std::filesystem::file_size(seat.file("anna/log.txt")) == 0; }));
    EXPECT_EQ(seat.end(), 0);
}

// A shell is the client. What it starts is not, and gets nowhere.
TEST(Conference, AnotherProcessIsShutOutWithoutDisturbingTheClient)
{
    const QD_Temp_Dir dir;
    const std::string client
        = script(dir, "pwd; echo $HOME $QD_LOCAL_ADDRESS $QD_CALLS\n" QD_FAKE_CLIENT " \"$@\"\n");
    Seat seat("run", {"anna@127.77.0.7", "--client", client});
    ASSERT_TRUE(seat.says(" has joined\n")) << seat.said();
    EXPECT_EQ(seat.end(), 0) << seat.said();
    const std::string home = seat.file("anna");
    EXPECT_EQ(qd_read_file(home + "/log.txt"), home + "\n" + home + " 127.77.0.7 none\n");
}

TEST(Conference, RefusesWhatCannotBeAMember)
{
    const QD_Fd held = qd_claim_address(0x7f000002); // perhaps somebody else's: held all the same
    Seat seat("run", {"anna"});
    ASSERT_TRUE(seat.says(" has joined\n")) << seat.said();
    EXPECT_THAT(
        seat.said(), testing::ContainsRegex("anna@127.0.0.([3-9]|[0-9]{2,3}) has joined\n"));
    seat.process().tell("join anna\njoin bo@127.0.0.2\njoin bo@10.0.0.1\njoin bo@127.255.255.255\n"
                        "join bo@12.7\njoin ../up\nleave bo \r\njoin\n"
        + std::string(1000000, 'x') + "\nlist\n");
    EXPECT_TRUE(
        seat.says("anna: there is a member of this name\n"
                  "bo: 127.0.0.2 is in use on this machine\n"
                  "bo: 10.0.0.1 is not of this machine: take one of 127.0.0.1 to 127.255.255.254\n"
                  "bo: 127.255.255.255 is not the address of one member\n"
                  "bo@12.7: what follows the '@' is no IPv4 address\n"
                  "../up: a name has no blanks and no '/', and does not begin with '.' or '-'\n"
                  "bo: there is no member of this name\n"
                  "the commands are: join NAME[@ADDRESS], leave NAME, list, end\n"
                  "a line is longer than 256 bytes\n1  anna@"))
        << seat.said();
}

TEST(Conference, ASignalEndsItAndFurtherOnesDoNotWait)
{
    const QD_Temp_Dir dir;
    Seat seat("run", {"stubborn", "--client", script(dir, "sleep 1000 &\necho $!\n")});
    ASSERT_TRUE(seat.says(" has joined\n")) << seat.said();
    std::optional<int> status;
    for (int i = 0; i < 40 && !status; ++i) { // an end without them takes longer
        ::kill(seat.process().pid(), SIGINT);
        status = seat.process().wait(200ms);
    }
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(ends(std::to_string(atoi(qd_read_file(seat.file("stubborn/log.txt")).c_str()))));
}

TEST(Conference, TakesItsClientsAlongWhenItIsKilled)
{
    Seat seat("run", {"no-registration"});
    ASSERT_TRUE(qd_wait_for([&] { return seat.client() > 0; })) << seat.said();
    const std::string client = std::to_string(seat.client());
    seat.process().end(SIGKILL);
    EXPECT_TRUE(ends(client));
}

}
