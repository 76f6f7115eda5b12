#include "conference/local/commands.h"

namespace {

void join(QD_Conference& conference, std::ostream& out, std::string_view argument)
{
    QD_Member_Plan plan;
    const std::string trouble = qd_parse_member(argument, plan);
    if (trouble.empty())
        conference.join(plan);
    else
        out << argument << ": " << trouble << std::endl;
}

struct Command {
    std::string_view name;
    bool has_argument;
    void (*execute)(QD_Conference&, std::ostream&, std::string_view argument);
};

constexpr Command COMMAND_TABLE[] = {
    {"join", true, join},
    {"leave", true,
        [](QD_Conference& conference, std::ostream&, std::string_view name) {
            conference.leave(name);
        }},
    {"list", false,
        [](QD_Conference& conference, std::ostream&, std::string_view) { conference.list(); }},
    {"end", false,
        [](QD_Conference& conference, std::ostream&, std::string_view) { conference.end(); }},
};

}

void QD_Commands::execute(std::string_view line)
{
    const std::string_view name = line.substr(0, line.find_first_of(" \t"));
    const std::string_view argument = QD_Line_Reader::trimmed(line.substr(name.size()));
    for (const Command& command : COMMAND_TABLE) {
        if (command.name == name && command.has_argument == !argument.empty()) {
            command.execute(conference_, out_, argument);
            return;
        }
    }
    out_ << "the commands are: join NAME[@ADDRESS], leave NAME, list, end" << std::endl;
}
