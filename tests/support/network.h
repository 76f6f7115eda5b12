// Hosts of the test's own: network namespaces on one bridge, each with an
// address. Needs root. Nothing of it is reachable from outside.
#pragma once

#include "tests/support/process.h"

#include "platform/base/fd.h"

#include <gtest/gtest.h>
#include <sched.h>

/// Host 0 has the bridge and the address 10.77.0.254; hosts 1..N have 10.77.0.1
/// and on, and no route anywhere else.
class QD_Test_Network {
public:
    explicit QD_Test_Network(int hosts) : hosts_(hosts)
    {
        const char* const script = R"(
            ip netns add $1-0
            ip -n $1-0 link add hub type bridge
            ip -n $1-0 addr add 10.77.0.254/24 dev hub
            ip -n $1-0 link set hub up
            for host in $(seq $2); do
                ip netns add $1-$host
                ip -n $1-0 link add port$host type veth peer name eth0 netns $1-$host
                ip -n $1-0 link set port$host master hub up
                ip -n $1-$host link set lo up
                ip -n $1-$host addr add 10.77.0.$host/24 dev eth0
                ip -n $1-$host link set eth0 up
            done)";
        EXPECT_EQ(qd_run({"sh", "-ec", script, "sh", name_, std::to_string(hosts)}), 0)
            << "network namespaces need root and the program ip";
    }
    ~QD_Test_Network()
    {
        for (int host = 0; host <= hosts_; ++host)
            qd_run({"ip", "netns", "del", name_ + "-" + std::to_string(host)});
    }
    QD_Test_Network(QD_Test_Network&&) = delete; // nor copied

    /// What runs the command that follows it at a host.
    std::vector<std::string> at(size_t host) const
    {
        return {"ip", "netns", "exec", name_ + "-" + std::to_string(host)};
    }

    /// Makes the calling thread, and what it starts, live at a host: sockets stay where they were
    /// made.
    void enter(int host) const
    {
        const QD_Fd space(
            ::open(("/var/run/netns/" + name_ + "-" + std::to_string(host)).c_str(), O_RDONLY));
        EXPECT_EQ(setns(space.get(), CLONE_NEWNET), 0);
    }

    /// Pulls a host's cable ("down"), or puts it in again ("up").
    void set_cable(int host, const char* state) const
    {
        qd_run({"ip", "-n", name_ + "-0", "link", "set", "port" + std::to_string(host), state});
    }

private:
    const int hosts_;
    const std::string name_ = "quendal-" + std::to_string(getpid());
};
