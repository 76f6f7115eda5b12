// Hosts of the test's own: network namespaces on one bridge, each with an
// address. Needs root. Nothing of it is reachable from outside.
#pragma once

#include "tests/support/process.h"

#include <string>
#include <unistd.h>
#include <vector>

/// Host 0 has the bridge and the address 10.77.0.254; hosts 1..N have 10.77.0.1
/// and on, and no route anywhere else.
class QD_Test_Network {
public:
    explicit QD_Test_Network(int hosts) : hosts_(hosts)
    {
        good_ = run({"netns", "add", name(0)}) && in(0, {"link", "set", "lo", "up"})
            && in(0, {"link", "add", "hub", "type", "bridge"})
            && in(0, {"addr", "add", address(254) + "/24", "dev", "hub"})
            && in(0, {"link", "set", "hub", "up"});
        for (int host = 1; good_ && host <= hosts; ++host) {
            good_ = run({"netns", "add", name(host)}) && in(host, {"link", "set", "lo", "up"})
                && in(0,
                    {"link", "add", port(host), "type", "veth", "peer", "name", "eth0", "netns",
                        name(host)})
                && in(0, {"link", "set", port(host), "master", "hub", "up"})
                && in(host, {"addr", "add", address(host) + "/24", "dev", "eth0"})
                && in(host, {"link", "set", "eth0", "up"});
        }
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
    bool cut(int host) const { return in(0, {"link", "set", port(host), "down"}); }
    bool heal(int host) const { return in(0, {"link", "set", port(host), "up"}); }

private:
    static std::string name(int host)
    {
        return "quendal-" + std::to_string(getpid()) + "-" + std::to_string(host);
    }
    static std::string port(int host) { return "port" + std::to_string(host); }

    static bool run(std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), "ip");
        return qd_run(arguments) == 0;
    }
    static bool in(int host, std::vector<std::string> arguments)
    {
        arguments.insert(arguments.begin(), {"-n", name(host)});
        return run(arguments);
    }

    const int hosts_;
    bool good_ = false;
};
