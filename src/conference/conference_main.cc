// quendal-conference: conferences on this machine.

#include "conference/companion.h"
#include "conference/demo.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace {

namespace fs = std::filesystem;

constexpr int STATUS_TROUBLE = 1; // a member went wrong, or was not heard
constexpr int STATUS_USAGE = 2;

/// The directory for the members' directories, made if need be; "" with a line if it cannot be had.
std::string make_directory(const std::string& wanted)
{
    std::error_code error;
    fs::path path = wanted;
    if (wanted.empty()) {
        std::string fresh = (fs::temp_directory_path(error) / "quendal-XXXXXX").string();
        if (error || mkdtemp(fresh.data()) == nullptr) {
            perror("quendal-conference: cannot make a directory");
            return "";
        }
        path = fresh;
    } else {
        fs::create_directories(path, error);
    }
    const fs::path whole = fs::absolute(path, error);
    if (error || !fs::is_directory(whole, error)) {
        std::cerr << "quendal-conference: " << path.string() << " cannot be made" << std::endl;
        return "";
    }
    return whole.string();
}

std::string find_client(const std::string& wanted)
{
    std::error_code error;
    const fs::path client = wanted.empty()
        ? fs::read_symlink("/proc/self/exe", error).parent_path() / "quendal"
        : fs::absolute(wanted, error);
    if (!error && ::access(client.c_str(), X_OK) == 0)
        return client.string();
    std::cerr << "quendal-conference: there is no client " << client.string()
              << "; name it with --client" << std::endl;
    return "";
}

int plan_members(
    const QD_Command_Line& line, const std::string& directory, std::vector<QD_Member_Plan>& members)
{
    if (line.mode_ == QD_Command_Line::DEMO)
        return qd_prepare_demo(line, directory, members, std::cerr);
    for (const std::string& text : line.members_) {
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
    setup.client_ = find_client(line.client_);
    if (setup.client_.empty())
        return STATUS_TROUBLE;
    setup.directory_ = make_directory(line.directory_);
    setup.options_ = line.options_;
    setup.announced_ = line.announced_;
    std::vector<QD_Member_Plan> members;
    if (setup.directory_.empty() || plan_members(line, setup.directory_, members) < 0)
        return STATUS_TROUBLE;

    std::cout << "members' directories: " << setup.directory_ << std::endl;
    QD_Conference conference(setup, std::cout);
    QD_Companion companion(conference, std::cout, STDIN_FILENO);
    bool refused = false;
    for (const QD_Member_Plan& member : members)
        refused = conference.join(member) < 0 || refused;
    const bool demo = line.mode_ == QD_Command_Line::DEMO;
    companion.run(
        demo ? QD_Course {std::chrono::seconds(line.seconds_), line.before_end_} : QD_Course {});
    const bool heard
        = !demo || qd_report_demo(setup.directory_, members, line.seconds_ > 0, std::cout) == 0;
    return refused || conference.failures() > 0 || !heard ? STATUS_TROUBLE : 0;
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
    if (line.mode_ == QD_Command_Line::HELP) {
        std::cout << QD_HELP;
        return 0;
    }
    return hold(line);
}
