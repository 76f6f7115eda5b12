// quendal-conference: conferences on this machine and across machines.

#include "conference/base/surroundings.h"
#include "conference/broker/across_machines.h"
#include "conference/broker/broker_url.h"
#include "conference/demo/demo.h"
#include "conference/local/companion.h"

#include <iostream>

namespace {

constexpr int STATUS_USAGE = 2;

int plan_members(
    const QD_Command_Line& line, const std::string& directory, std::vector<QD_Member_Plan>& members)
{
    if (line.mode == QD_Command_Line::DEMO)
        return qd_prepare_demo(line, directory, members, std::cerr);
    for (const std::string& text : line.members) {
        QD_Member_Plan plan;
        if (std::string trouble = qd_parse_member(text, plan); !trouble.empty()) {
            std::cerr << "quendal-conference: " << text << ": " << trouble << std::endl;
            return -1;
        }
        members.push_back(plan);
    }
    return 0;
}

int hold(const QD_Command_Line& line)
{
    QD_Conference_Setup setup;
    setup.client = qd_find_client(line.client);
    if (setup.client.empty())
        return QD_STATUS_TROUBLE;
    setup.directory = qd_make_directory(line.directory);
    setup.options = line.options;
    setup.announced = line.announced;
    std::vector<QD_Member_Plan> members;
    if (setup.directory.empty() || plan_members(line, setup.directory, members) < 0)
        return QD_STATUS_TROUBLE;

    std::cout << "members' directories: " << setup.directory << std::endl;
    QD_Conference conference(setup, std::cout);
    QD_Companion companion(conference, std::cout, STDIN_FILENO);
    bool refused = false;
    for (const QD_Member_Plan& member : members)
        refused = conference.join(member) < 0 || refused;
    const bool demo = line.mode == QD_Command_Line::DEMO;
    companion.run(
        demo ? QD_Course {std::chrono::seconds(line.seconds), line.before_end} : QD_Course {});
    const bool heard
        = !demo || qd_report_demo(setup.directory, members, line.seconds > 0, std::cout) == 0;
    return refused || conference.failures() > 0 || !heard ? QD_STATUS_TROUBLE : 0;
}

}

int main(int argc, char** argv)
{
    QD_Command_Line line;
    const std::string trouble
        = qd_parse_command_line({argv + 1, static_cast<size_t>(std::max(0, argc - 1))}, line);
    if (!trouble.empty()) {
        std::cerr << "quendal-conference: " << trouble << "; see quendal-conference --help"
                  << std::endl;
        return STATUS_USAGE;
    }
    if (line.mode == QD_Command_Line::HELP) {
        std::cout << QD_HELP;
        return 0;
    }
    for (int i = 1; i < argc; ++i)
        qd_hide_password(argv[i]); // the list of processes shows them to everybody
    if (line.mode == QD_Command_Line::JOIN)
        return qd_join_conference(line);
    return line.mode == QD_Command_Line::HOST ? qd_host_conference(line) : hold(line);
}
