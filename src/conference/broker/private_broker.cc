#include "conference/broker/private_broker.h"

#include "conference/broker/broker_link.h"
#include "platform/base/clock.h"
#include "platform/base/fd.h"
#include "platform/net/host_address.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <netinet/in.h>
#include <poll.h>
#include <pwd.h>
#include <random>
#include <sys/socket.h>
#include <sys/stat.h>

namespace {

constexpr uint16_t USUAL_PORT = 8883;
constexpr std::chrono::seconds START_BOUND {5};

/// A port at which nobody listens: the wanted one, with 0 any; 0 if there is none.
uint16_t free_port(uint32_t address, uint16_t wanted)
{
    const QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const int again = 1; // as the broker itself does
    ::setsockopt(fd.get(), SOL_SOCKET, SO_REUSEADDR, &again, sizeof again);
    sockaddr_in here = qd_socket_address(address, wanted);
    socklen_t size = sizeof here;
    if (!fd || ::bind(fd.get(), reinterpret_cast<sockaddr*>(&here), size) < 0
        || ::getsockname(fd.get(), reinterpret_cast<sockaddr*>(&here), &size) < 0)
        return 0;
    return ntohs(here.sin_port);
}

bool answers(uint32_t address, uint16_t port)
{
    const sockaddr_in there = qd_socket_address(address, port);
    const QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return fd && ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&there), sizeof there) == 0;
}

/// 256 bits in hexadecimal digits.
std::string fresh_key()
{
    std::random_device random;
    std::string key;
    for (int i = 0; i < 64; ++i)
        key += "0123456789abcdef"[random() & 15];
    return key;
}

/// The program, which users other than root do not have on their PATH.
std::string find_mosquitto()
{
    const char* const path = getenv("PATH");
    std::string places = (path != nullptr ? path : "") + std::string(":/usr/sbin:/usr/local/sbin");
    for (size_t begin = 0; begin < places.size();) {
        const size_t end = std::min(places.find(':', begin), places.size());
        const std::string program = places.substr(begin, end - begin) + "/mosquitto";
        if (program[0] == '/' && ::access(program.c_str(), X_OK) == 0)
            return program;
        begin = end + 1;
    }
    return "";
}

bool write_file(const std::string& path, const std::string& text)
{
    std::ofstream file(path);
    file << text;
    file.close();
    return file && ::chmod(path.c_str(), 0600) == 0;
}

}

std::string QD_Private_Broker::write_files(const std::string& directory) const
{
    const std::string topic = url_.topic();
    const std::pair<const char*, std::string> files[] = {
        {"keys", url_.user + ":" + url_.password + "\n"},
        {"acl", "pattern read " + topic + "#\npattern write " + topic + "%u/+\n"},
        {"mosquitto.conf",
            "listener " + std::to_string(url_.port) + " " + url_.host + "\npsk_file " + directory
                + "/keys\npsk_hint quendal\nuse_identity_as_username true\n"
                  "allow_anonymous false\nacl_file "
                + directory + "/acl\nmessage_size_limit "
                + std::to_string(QD_Broker_Link::MAX_MESSAGE)
                + "\npersistence false\n"
                  "max_inflight_messages 100\nmax_queued_messages 2000\n"},
    };
    // As root it becomes another user before it reads its files.
    const passwd* const other = ::geteuid() == 0 ? ::getpwnam("mosquitto") : nullptr;
    bool good = ::chmod(directory.c_str(), 0700) == 0;
    for (const auto& [name, text] : files) {
        const std::string path = directory + "/" + name;
        good = good && write_file(path, text)
            && (other == nullptr || ::chown(path.c_str(), other->pw_uid, other->pw_gid) == 0);
    }
    good = good
        && (other == nullptr || ::chown(directory.c_str(), other->pw_uid, other->pw_gid) == 0);
    return good ? "" : directory + ": " + strerror(errno);
}

std::string QD_Private_Broker::start(uint32_t address, uint16_t port, const std::string& directory)
{
    const std::string program = find_mosquitto();
    if (program.empty())
        return "the broker's program mosquitto is not installed";
    url_.scheme = QD_Broker_Url::SHARED_KEY;
    url_.host = qd_address_text(address);
    url_.user = "guest";
    url_.password = fresh_key();
    url_.port = free_port(address, port != 0 ? port : USUAL_PORT);
    if (url_.port == 0 && port == 0)
        url_.port = free_port(address, 0);
    if (url_.port == 0)
        return "the port " + std::to_string(port) + " is in use";
    if (std::string trouble = write_files(directory); !trouble.empty())
        return trouble;

    QD_Launch launch;
    launch.program = program;
    launch.arguments = {"-c", directory + "/mosquitto.conf"};
    launch.log = directory + "/log.txt";
    if (child_.start(launch) < 0)
        return std::string("the broker cannot be started: ") + strerror(errno);
    const auto bound = QD_Clock::real().now() + START_BOUND;
    while (!answers(address, url_.port)) {
        pollfd ended {child_.get(), POLLIN, 0};
        if (::poll(&ended, 1, 20) > 0 || QD_Clock::real().now() > bound)
            return "the broker does not start; see " + launch.log;
    }
    return "";
}
