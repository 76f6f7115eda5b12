// Conferences over a broker, of clients that keep to their link.
#include "tests/conference/seat.h"
#include "tests/support/broker.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <regex>

using namespace std::chrono_literals;

constexpr int SLOWNESS = sizeof QD_SANITIZED > 1 ? 3 : 1; // a sanitizer takes its own

namespace {

TEST(Join, AllAreToldTheSameAndOfWhoeverDiesWithinASecondAndFreezesWithinTen)
{
    const QD_Test_Broker broker;
    std::vector<std::unique_ptr<Member>> members;
    for (const char* name : {"anna", "killed", "client-killed", "client-frozen", "frozen"})
        members.push_back(std::make_unique<Member>(
            name, 2 + static_cast<int>(members.size()), "mqtt://" + broker.place()));
    Member& anna = *members[0];
    for (const auto& who : members)
        for (const auto& whom : members)
            ASSERT_TRUE(who->says(whom->label + " has joined\n")) << who->said();
    for (const auto& member : members) // whose clients may not have read them yet
        EXPECT_TRUE(qd_wait_for([&] { return member->told() == anna.told(); })) << member->said();
    EXPECT_EQ(anna.told().size(), 5u);
    EXPECT_NE(
        qd_read_file("/proc/" + std::to_string(anna.client()) + "/environ").find("QD_CALLS=none"),
        std::string::npos)
        << "who is announced is not called";

    const std::pair<pid_t, int> faults[]
        = {{members[1]->process().pid(), SIGKILL}, {members[2]->client(), SIGKILL},
            {members[3]->client(), SIGSTOP}, {members[4]->process().pid(), SIGSTOP}};
    for (size_t i = 1; i < members.size(); ++i) {
        const auto [pid, signal] = faults[i - 1];
        const std::regex gone(members[i]->label + " (has left\n|is gone)");
        ::kill(pid, signal);
        EXPECT_TRUE(qd_wait_for([&] { return std::regex_search(anna.said(), gone); },
            (signal == SIGKILL ? 1s : 10s) * SLOWNESS))
            << members[i]->label;
    }
    EXPECT_TRUE(qd_wait_for([&] { return anna.told().size() == 5 + 4; })) << "the client, too";
    EXPECT_EQ(members[2]->process().wait(10s), 1);
    EXPECT_TRUE(members[2]->says("client-killed ended with signal 9"));

    const Member& frozen = *members[4];
    ::kill(faults[3].first, SIGCONT);
    EXPECT_TRUE(anna.says(frozen.label + " has joined\n", frozen.label + " is gone")) << "back";
    EXPECT_EQ(frozen.said().find(anna.label + " is gone"), std::string::npos);
    anna.process().tell("list\n");
    EXPECT_TRUE(anna.says(frozen.label + "\n2 members\n"));
    EXPECT_EQ(anna.end(), 0);
}

// Three conferences, each with a broker that goes in another way: orderly, when it
// removes everybody's record first; killed; or stuck for so long that everybody
// connects anew. One of each three dies meanwhile, so that the others are seen to miss
// whoever does not return.
TEST(Join, NobodyElseIsLostByABrokerThatGoesAndReturns)
{
    QD_Test_Broker brokers[3];
    std::vector<std::unique_ptr<Member>> members;
    for (int i = 0; i < 9; ++i)
        members.push_back(
            std::make_unique<Member>("anna", 20 + i, "mqtt://" + brokers[i / 3].place()));
    const auto all = [&](const auto& condition) {
        return qd_wait_for([&] { return std::ranges::all_of(members, condition); }, 30s);
    };
    const auto told = [](size_t records) {
        return [=](const auto& member) { return member->told().size() == records; };
    };
    const auto said = [](const char* text) {
        return [=](const auto& member) { return member->said().find(text) != std::string::npos; };
    };
    ASSERT_TRUE(all(told(3)));
    brokers[0].stop(SIGTERM);
    brokers[1].stop(SIGKILL);
    ::kill(brokers[2].pid(), SIGSTOP);
    ASSERT_TRUE(all(said(" is lost: ")));
    for (int dead : {8, 5, 2})
        members.erase(members.begin() + dead);
    EXPECT_TRUE(brokers[0].start() && brokers[1].start());
    ::kill(brokers[2].pid(), SIGCONT);
    ASSERT_TRUE(all(said(" is back\n")));
    ASSERT_TRUE(all(said(" is gone")));
    EXPECT_TRUE(all(told(3 + 1)));
}

}
