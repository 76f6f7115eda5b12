#include "platform/net/sock_library.h"

#include "platform/base/create_thread.h"
#include "platform/net/host_names.h"
#include "platform/net/local_address.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <future>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace {

constexpr auto NAME_WAIT = std::chrono::seconds(1);

std::string ask_for_name(uint32_t address)
{
    sockaddr_in host {};
    host.sin_family = AF_INET;
    host.sin_addr.s_addr = address;
    char name[NI_MAXHOST] = "";
    const int result = getnameinfo(reinterpret_cast<const sockaddr*>(&host), sizeof host, name,
        sizeof name, nullptr, 0, NI_NAMEREQD);
    return result == 0 ? name : "";
}

uint32_t ask_for_address(const std::string& name)
{
    addrinfo hints {};
    hints.ai_family = AF_INET;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(name.c_str(), nullptr, &hints, &found) != 0)
        return 0;
    const uint32_t address = reinterpret_cast<const sockaddr_in*>(found->ai_addr)->sin_addr.s_addr;
    freeaddrinfo(found);
    return address;
}

uint32_t find_local_address()
{
    const QD_Address_Facts facts = qd_address_facts();
    if (facts.override_text != nullptr && !qd_override_address(facts.override_text))
        fprintf(
            stderr, "QD_LOCAL_ADDRESS: \"%s\" is not a host's IPv4 address\n", facts.override_text);
    return qd_choose_address(facts);
}

}

uint32_t SOCK_Library::getlocalhostid()
{
    static const uint32_t address = find_local_address();
    return address;
}

uint32_t SOCK_Library::get_bind_address()
{
    static const bool given = qd_override_address(getenv("QD_LOCAL_ADDRESS")).has_value();
    return given ? getlocalhostid() : htonl(INADDR_ANY);
}

uint32_t SOCK_Library::gethostid(const char* name)
{
    in_addr dotted {};
    if (inet_pton(AF_INET, name, &dotted) == 1)
        return dotted.s_addr;
    if (*name == '\0' || strlen(name) >= NAME_SIZE)
        return 0;

    const auto promise = std::make_shared<std::promise<uint32_t>>();
    std::future<uint32_t> answer = promise->get_future();
    // A dead resolver takes ten seconds and more: the asking thread is left to itself.
    const auto ask
        = [text = std::string(name), promise] { promise->set_value(ask_for_address(text)); };
    if (qd_run_detached(ask) < 0)
        return 0;
    return answer.wait_for(NAME_WAIT) == std::future_status::ready ? answer.get() : 0;
}

void SOCK_Library::gethostname(uint32_t address, char (&out)[NAME_SIZE])
{
    // Kept for the life of the process: its thread may be waiting for a resolver at the end.
    static auto* names = new QD_Host_Names(ask_for_name);
    std::string name;
    if (ntohl(address) >> 24 != 127)
        name = names->find(address);
    if (name.empty() || name.size() >= NAME_SIZE)
        getdotted(address, out);
    else
        memcpy(out, name.c_str(), name.size() + 1);
}

void SOCK_Library::getdotted(uint32_t address, char (&out)[NAME_SIZE])
{
    inet_ntop(AF_INET, &address, out, sizeof out);
}
