#include "conference/base/socket_owner.h"

#include "platform/base/fd.h"

#include <cstring>
#include <filesystem>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <sys/time.h>

namespace {

// The kernel's own records, in its byte order; they never leave the machine.
struct Request {
    nlmsghdr header;
    inet_diag_req_v2 body;
};

/// The inode of the socket bound to `own` and connected to `other`, if this
/// user owns it; 0 otherwise.
unsigned inode_of(const sockaddr_in& own, const sockaddr_in& other)
{
    QD_Fd netlink(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    if (!netlink)
        return 0;
    const timeval bound {1, 0};
    ::setsockopt(netlink.get(), SOL_SOCKET, SO_RCVTIMEO, &bound, sizeof bound);

    Request request {};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    request.header.nlmsg_flags = NLM_F_REQUEST;
    request.body.sdiag_family = AF_INET;
    request.body.sdiag_protocol = IPPROTO_TCP;
    request.body.idiag_states = ~0U;
    request.body.id.idiag_sport = own.sin_port;
    request.body.id.idiag_dport = other.sin_port;
    request.body.id.idiag_src[0] = own.sin_addr.s_addr;
    request.body.id.idiag_dst[0] = other.sin_addr.s_addr;
    request.body.id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
    request.body.id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
    if (::send(netlink.get(), &request, sizeof request, 0) != sizeof request)
        return 0;

    char answer[4096];
    const ssize_t got = ::recv(netlink.get(), answer, sizeof answer, 0);
    nlmsghdr header;
    inet_diag_msg found;
    if (got < static_cast<ssize_t>(NLMSG_HDRLEN + sizeof found))
        return 0;
    memcpy(&header, answer, sizeof header);
    memcpy(&found, answer + NLMSG_HDRLEN, sizeof found);
    if (header.nlmsg_type != SOCK_DIAG_BY_FAMILY || found.idiag_uid != ::geteuid())
        return 0;
    return found.idiag_inode;
}

bool holds(pid_t pid, unsigned inode)
{
    namespace fs = std::filesystem;
    const std::string wanted = "socket:[" + std::to_string(inode) + "]";
    std::error_code error;
    fs::directory_iterator fds("/proc/" + std::to_string(pid) + "/fd", error);
    for (; !error && fds != fs::directory_iterator(); fds.increment(error)) {
        std::error_code gone;
        if (fs::read_symlink(fds->path(), gone) == wanted)
            return true;
    }
    return false;
}

}

bool qd_far_end_is(int fd, pid_t pid)
{
    sockaddr_in near {};
    sockaddr_in far {};
    socklen_t near_size = sizeof near;
    socklen_t far_size = sizeof far;
    if (::getsockname(fd, reinterpret_cast<sockaddr*>(&near), &near_size) < 0
        || ::getpeername(fd, reinterpret_cast<sockaddr*>(&far), &far_size) < 0
        || near.sin_family != AF_INET || far.sin_family != AF_INET)
        return false;
    const unsigned inode = inode_of(far, near);
    return inode != 0 && holds(pid, inode);
}
