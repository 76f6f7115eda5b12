#include "conference/broker/across_machines.h"

#include "conference/base/address_claim.h"
#include "conference/base/loop.h"
#include "conference/base/member_name.h"
#include "conference/base/surroundings.h"
#include "conference/broker/join.h"
#include "conference/broker/private_broker.h"
#include "platform/net/host_address.h"
#include "platform/net/sock_library.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <pwd.h>

namespace {

/// The address that the client will take as its own, as a number.
uint32_t own_address() { return ntohl(SOCK_Library::getlocalhostid()); }

/// The password: what a file or the environment gives goes before the URL's.
int read_password(const QD_Command_Line& line, QD_Broker_Url& url)
{
    const char* const given = getenv("QD_BROKER_PASSWORD");
    if (!line.password_file.empty()) {
        std::ifstream file(line.password_file);
        if (!std::getline(file, url.password))
            return qd_complain(line.password_file + " has no password");
    } else if (given != nullptr) {
        url.password = given;
    }
    ::unsetenv("QD_BROKER_PASSWORD"); // it is not the client's affair
    const std::string trouble = url.secret_trouble();
    return trouble.empty() ? 0 : qd_complain(trouble);
}

/// What the others call the member, unless the command line says so.
std::string login_name()
{
    const passwd* const user = ::getpwuid(::geteuid());
    return user != nullptr ? user->pw_name : "";
}

/// Fills in and checks what the command line leaves open or gets wrong.
int settle(QD_Command_Line& line, QD_Broker_Url& url)
{
    if (line.name.empty())
        line.name = login_name();
    std::string trouble = qd_name_trouble(line.name);
    if (trouble.empty() && !line.conference.empty())
        trouble = url.set_conference(line.conference);
    return trouble.empty() ? 0 : qd_complain(trouble);
}

/// `told_to_end`: by the user of this program, not by the client's end.
int take_part(const QD_Command_Line& line, const QD_Broker_Url& url, bool& told_to_end)
{
    QD_Join_Setup setup;
    setup.broker = url;
    setup.name = line.name;
    setup.address = own_address();
    setup.options = line.options;
    setup.client = qd_find_client(line.client);
    if (setup.client.empty())
        return QD_STATUS_TROUBLE;
    const QD_Fd claim = qd_claim_address(setup.address);
    if (!claim)
        return qd_complain(qd_address_text(setup.address)
            + " is another member's already on this machine;"
              " give each member a QD_LOCAL_ADDRESS of its own");
    setup.directory = qd_make_directory(line.directory);
    if (setup.directory.empty())
        return QD_STATUS_TROUBLE;
    QD_Join join(setup, std::cout, STDIN_FILENO);
    const int result = join.run();
    told_to_end = join.told_to_end();
    return result < 0 ? QD_STATUS_TROUBLE : 0;
}

/// Waits for Ctrl-C, or for the end of the broker.
int keep_open(const QD_Private_Broker& broker, const QD_Fd& signals)
{
    pollfd polled[] = {{signals.get(), POLLIN, 0}, {broker.get(), POLLIN, 0}};
    while (::poll(polled, 2, -1) < 0 && errno == EINTR) {}
    return polled[1].revents == 0 ? 0 : qd_complain("the broker has ended");
}

int host(const QD_Command_Line& line, const QD_Broker_Url& asked, const std::string& directory)
{
    // Blocked before the broker starts, which a Ctrl-C is not meant for.
    const QD_Fd signals = qd_block_ending_signals();
    QD_Private_Broker broker(asked.conference);
    const std::string trouble
        = broker.start(own_address(), static_cast<uint16_t>(line.port), directory);
    if (!trouble.empty())
        return qd_complain(trouble);
    std::cout << "The conference is open until Ctrl-C. Others join it by this line"
              << (own_address() >> 24 == 127 ? ", on this machine only" : "") << ":\n\n"
              << "    quendal-conference join --broker " << broker.url().text() << "\n"
              << std::endl;
    bool told_to_end = false;
    const int status = line.takes_part ? take_part(line, broker.url(), told_to_end) : 0;
    return status != 0 || told_to_end ? status : keep_open(broker, signals);
}

}

int qd_join_conference(QD_Command_Line line)
{
    QD_Broker_Url url;
    if (std::string trouble = QD_Broker_Url::parse(line.broker, url); !trouble.empty())
        return qd_complain(trouble);
    if (settle(line, url) != 0)
        return QD_STATUS_TROUBLE;
    url.ca_file = line.ca_file;
    bool told_to_end = false;
    return read_password(line, url) != 0 ? QD_STATUS_TROUBLE : take_part(line, url, told_to_end);
}

int qd_host_conference(QD_Command_Line line)
{
    QD_Broker_Url url;
    if (settle(line, url) != 0)
        return QD_STATUS_TROUBLE;
    const std::string directory = qd_make_directory("");
    if (directory.empty())
        return QD_STATUS_TROUBLE;
    const int status = host(line, url, directory);
    if (status == 0) { // else its log may tell why
        std::error_code ignored;
        std::filesystem::remove_all(directory, ignored);
    }
    return status;
}
