// A real client among hosts that vanish without a word.
#include "tests/support/client_under_test.h"
#include "tests/support/gaps.h"
#include "tests/support/network.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

constexpr int HOSTS = 12; // the client's is the first
constexpr int LIVING = 6;

uint32_t address(int host) { return inet_addr(("10.77.0." + std::to_string(host)).c_str()); }

}

TEST(Vanish, SixOfTwelveHostsGoAndTheOthersHearAndSeeOn)
{
    const QD_X_Server x_server;
    const QD_Test_Network network(HOSTS);
    std::vector<std::unique_ptr<QD_Udp_Peer>> sound;
    std::vector<std::unique_ptr<QD_Udp_Peer>> pictures;
    for (int host = 2; host <= HOSTS; ++host) {
        network.enter(host);
        sound.push_back(std::make_unique<QD_Udp_Peer>(address(host), 12567));
        pictures.push_back(std::make_unique<QD_Udp_Peer>(address(host), 34999));
    }
    network.enter(1);
    QD_Client_Under_Test client(1,
        {.mic = "tone:440",
            .toolkit_options = {"-xrm", "*toggle.set: True"},
            .environment = {{"QD_LOCAL_ADDRESS", "10.77.0.1"}}});
    // Those who vanish come first in the order of sending.
    for (int host = HOSTS; host > 0; --host)
        client.framework().announce_at(
            host > LIVING ? host - LIVING : host + HOSTS, address(host), "m");
    for (const auto& peer : sound)
        ASSERT_EQ(peer->receive(5000).size(), 1612u);
    for (const auto& peer : pictures)
        ASSERT_FALSE(peer->receive(5000).empty());

    for (int host = LIVING + 1; host <= HOSTS; ++host)
        network.set_cable(host, "down");
    qd_run({"ip", "neigh", "flush", "dev", "eth0"}); // as it will be forgotten in time
    QD_Gaps heard(*sound.front(), 1 + HOSTS);
    QD_Gaps seen(*pictures.front(), 1 + HOSTS);
    std::thread watching([&] { seen.watch(12s); });
    heard.watch(12s);
    watching.join();
    EXPECT_LT(heard.longest(), 300ms);
    EXPECT_GE(heard.count(), 119);
    EXPECT_LT(seen.longest(), 700ms);

    // Who comes back is found again.
    network.set_cable(HOSTS, "up");
    QD_Gaps back(*sound.back(), 1 + HOSTS);
    back.watch(100ms);
    EXPECT_TRUE(qd_wait_for([&] { return back.watch(1s), back.count() >= 10; }, 30s));
    EXPECT_EQ(client.end(), 0);
}
