#include "conference/base/address_claim.h"

#include "platform/net/host_address.h"

#include <algorithm>
#include <cstddef>
#include <sys/socket.h>
#include <sys/un.h>

namespace {

constexpr uint16_t AUDIO_PORT = 12567;

bool media_port_is_free(uint32_t address)
{
    QD_Fd fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const sockaddr_in wanted = qd_socket_address(address, AUDIO_PORT);
    return fd && ::bind(fd.get(), reinterpret_cast<const sockaddr*>(&wanted), sizeof wanted) == 0;
}

}

std::string qd_address_trouble(uint32_t address)
{
    if (address >> 24 != 127)
        return "is not of this machine: take one of 127.0.0.1 to 127.255.255.254";
    if (address == 0x7f000000 || address == 0x7fffffff)
        return "is not the address of one member";
    return "";
}

QD_Fd qd_claim_address(uint32_t address)
{
    // A name in the abstract space: the kernel forgets it with the descriptor.
    QD_Fd claim(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const std::string name = "quendal-member-" + qd_address_text(address);
    sockaddr_un holder {};
    holder.sun_family = AF_UNIX;
    std::copy(name.begin(), name.end(), holder.sun_path + 1);
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size());
    if (!claim || ::bind(claim.get(), reinterpret_cast<sockaddr*>(&holder), size) < 0
        || !media_port_is_free(address))
        return QD_Fd();
    return claim;
}
