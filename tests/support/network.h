// Hosts of the test's own: network namespaces on one bridge, each with an
// address. Needs root. Nothing of it is reachable from outside.
#pragma once

#include "tests/support/process.h"

/// Host 0 has the bridge and the address 10.77.0.254; hosts 1..N have 10.77.0.1
/// and on, and no route anywhere else.
class QD_Test_Network {
public:
    explicit QD_Test_Network(int hosts) : hosts_(hosts)
    {
        const char* const script = R"(
            ip netns add $1-0
            ip -n $1-0 link set lo up
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
        good_ = qd_run({"sh", "-ec", script, "sh", prefix(), std::to_string(hosts)}) == 0;
    }
    ~QD_Test_Network()
    {
        for (int host = 0; host <= hosts_; ++host)
            qd_run({"ip", "netns", "del", name(host)});
    }
    QD_Test_Network(const QD_Test_Network&) = delete;
    QD_Test_Network& operator=(const QD_Test_Network&) = delete;

    /// Whether all hosts are there.
    bool good() const { return good_; }

    static std::string address(int host) { return "10.77.0." + std::to_string(host); }

    /// `command` as it is run at a host.
    std::vector<std::string> at(int host, std::vector<std::string> command) const
    {
        command.insert(command.begin(), {"ip", "netns", "exec", name(host)});
        return command;
    }

    /// Pulls a host's cable, puts it in again.
    bool cut(int host) const { return set_port(host, "down"); }
    bool heal(int host) const { return set_port(host, "up"); }

private:
    static std::string prefix() { return "quendal-" + std::to_string(getpid()); }
    static std::string name(int host) { return prefix() + "-" + std::to_string(host); }

    static bool set_port(int host, const char* state)
    {
        return qd_run({"ip", "-n", name(0), "link", "set", "port" + std::to_string(host), state})
            == 0;
    }

    const int hosts_;
    bool good_ = false;
};
