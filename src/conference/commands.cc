#include "conference/commands.h"

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
    std::string_view name_;
    bool has_argument_;
    void (*execute_)(QD_Conference&, std::ostream&, std::string_view argument);
};

constexpr Command command_table[] = {
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

constexpr std::string_view BLANKS = " \t\r";

std::string_view trimmed(std::string_view text)
{
    const size_t begin = text.find_first_not_of(BLANKS);
    if (begin == std::string_view::npos)
        return "";
    return text.substr(begin, text.find_last_not_of(BLANKS) - begin + 1);
}

}

void QD_Commands::take(std::string_view typed)
{
    for (char c : typed) {
        if (c == '\n' && too_long_)
            out_ << "a line is longer than " << MAX_LINE << " bytes" << std::endl;
        else if (c == '\n')
            execute(line_);
        else if (line_.size() < MAX_LINE)
            line_ += c;
        else
            too_long_ = true;
        if (c == '\n') {
            line_.clear();
            too_long_ = false;
        }
    }
}

void QD_Commands::execute(std::string_view line)
{
    line = trimmed(line);
    if (line.empty())
        return;
    const std::string_view name = line.substr(0, line.find_first_of(BLANKS));
    const std::string_view argument = trimmed(line.substr(name.size()));
    for (const Command& command : command_table) {
        if (command.name_ == name && command.has_argument_ == !argument.empty()) {
            command.execute_(conference_, out_, argument);
            return;
        }
    }
    out_ << "the commands are: join NAME[@ADDRESS], leave NAME, list, end" << std::endl;
}
