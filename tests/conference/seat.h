// Companions as processes, whose clients are fakes.
#pragma once

#include "tests/support/loopback.h"
#include "tests/support/seat.h"

#include <iterator>
#include <set>

class Seat : public QD_Seat {
public:
    Seat(const std::string& mode, std::vector<std::string> arguments,
        const std::map<std::string, std::string>& environment = {})
    {
        arguments.insert(arguments.begin(), {"--client", QD_FAKE_CLIENT});
        start(mode, arguments, environment);
    }

    /// The first of its clients, 0 if there is none.
    pid_t client()
    {
        const std::string pid = std::to_string(process().pid());
        return atoi(qd_read_file("/proc/" + pid + "/task/" + pid + "/children").c_str());
    }

    /// What a client was told, as it has written it down.
    std::set<std::string> told(const std::string& payloads = "payloads") const
    {
        std::istringstream lines(qd_read_file(file(payloads)));
        return {std::istream_iterator<std::string>(lines), {}};
    }
};

/// One who joins a conference at the test address of that number.
class Member : public Seat {
public:
    Member(const std::string& name, int host, const std::string& broker,
        const std::string& authority = "/nowhere") :
        Seat("join", {"--name", name, "--broker", broker, "--ca", authority},
            {{"QD_LOCAL_ADDRESS", qd_test_address(host)}}),
        label(name + "@" + qd_test_address(host))
    {
    }
    const std::string label;
};
