#include "platform/net/neighbours.h"

#include "tests/support/process.h"
#include "tests/support/udp_peer.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <thread>

using namespace std::chrono_literals;

namespace {

// In a network of the test's own, whose only other end takes everything and says nothing.
void expect_hosts_to_be_missed()
{
    ASSERT_EQ(unshare(CLONE_NEWNET), 0) << "needs root";
    ASSERT_EQ(qd_run({"sh", "-ec",
                  "ip link add v0 type veth peer name v1; ip link set v1 up;"
                  "ip addr add 10.9.0.1/24 dev v0; ip link set v0 up"}),
        0);
    const auto host = [](int number) { return htonl(0x0a090000U + static_cast<unsigned>(number)); };
    const QD_Udp_Peer sender(host(1), 9999);
    const QD_Clock::Time now = QD_Clock::real().now();
    QD_Neighbours neighbours;
    neighbours.refresh();
    EXPECT_TRUE(neighbours.may_send(host(2), now) && neighbours.may_send(host(2), now));
    for (int number = 2; number < 40; ++number)
        sender.send("x", host(number));
    neighbours.refresh();
    EXPECT_FALSE(neighbours.may_send(host(2), now)) << "is being looked for";
    EXPECT_TRUE(neighbours.may_send(host(50), now));
    const auto trials = [&](QD_Clock::Time when) {
        int count = 0;
        for (int number = 2; number < 40; ++number)
            count += neighbours.may_send(host(number), when) ? 1 : 0;
        return count;
    };
    // Given up after three seconds: now and then one may try, few at the same time.
    EXPECT_TRUE(qd_wait_for([&] { return neighbours.refresh(), trials(now) > 0; }));
    neighbours.refresh();
    EXPECT_EQ(trials(now + 10ms), QD_Neighbours::MAX_TRIALS);
    EXPECT_EQ(trials(now + 20ms), 0);
    neighbours.refresh();
    EXPECT_EQ(trials(now + 30ms), QD_Neighbours::MAX_TRIALS) << "others than before";

    qd_run({"ip", "neigh", "replace", "10.9.0.2", "lladdr", "02:00:00:00:00:02", "dev", "v0"});
    neighbours.refresh();
    EXPECT_TRUE(neighbours.may_send(host(2), now) && neighbours.may_send(host(2), now));
}

}

TEST(Neighbours, WhoDoesNotAnswerIsTriedNowAndThen)
{
    std::thread(expect_hosts_to_be_missed).join(); // a network of one's own is a thread's
}
