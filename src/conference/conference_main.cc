// quendal-conference: conferences on this machine and across machines.

#include "conference/address_claim.h"
#include "conference/companion.h"
#include "conference/demo.h"
#include "conference/join.h"
#include "conference/member_name.h"
#include "platform/net/sock_library.h"

#include <arpa/inet.h>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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

int complain(const std::string& trouble)
{
    std::cerr << "quendal-conference: " << trouble << std::endl;
    return STATUS_TROUBLE;
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

/// The password: what a file or the environment gives goes before the URL's.
int read_password(const QD_Command_Line& line, QD_Broker_Url& url)
{
    const char* const given = getenv("QD_BROKER_PASSWORD");
    if (!line.password_file_.empty()) {
        std::ifstream file(line.password_file_);
        if (!std::getline(file, url.password_))
            return complain(line.password_file_ + " has no password");
    } else if (given != nullptr) {
        url.password_ = given;
    }
    ::unsetenv("QD_BROKER_PASSWORD"); // it is not the client's affair
    const std::string trouble = url.secret_trouble();
    return trouble.empty() ? 0 : complain(trouble);
}

int take_part(const QD_Command_Line& line, const QD_Broker_Url& url)
{
    QD_Join_Setup setup;
    setup.broker_ = url;
    setup.name_ = line.members_[0];
    setup.address_ = ntohl(SOCK_Library::getlocalhostid());
    setup.options_ = line.options_;
    setup.client_ = find_client(line.client_);
    if (setup.client_.empty())
        return STATUS_TROUBLE;
    const QD_Fd claim = qd_claim_address(setup.address_);
    if (!claim)
        return complain(qd_address_text(setup.address_)
            + " is another member's already on this machine;"
              " give each member a QD_LOCAL_ADDRESS of its own");
    setup.directory_ = make_directory(line.directory_);
    if (setup.directory_.empty())
        return STATUS_TROUBLE;
    return QD_Join(setup, std::cout, STDIN_FILENO).run() < 0 ? STATUS_TROUBLE : 0;
}

int join(const QD_Command_Line& line)
{
    QD_Broker_Url url;
    if (std::string trouble = QD_Broker_Url::parse(line.broker_, url); !trouble.empty())
        return complain(trouble);
    if (std::string trouble = qd_name_trouble(line.members_[0]); !trouble.empty())
        return complain(trouble);
    url.ca_file_ = line.ca_file_;
    return read_password(line, url) != 0 ? STATUS_TROUBLE : take_part(line, url);
}

}

int main(int argc, char** argv)
{
    ::signal(SIGPIPE, SIG_IGN);
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
    for (int i = 1; i < argc; ++i)
        qd_hide_password(argv[i]); // the list of processes shows them to everybody
    return line.mode_ == QD_Command_Line::JOIN ? join(line) : hold(line);
}
