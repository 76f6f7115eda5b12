#include "platform/net/udp_socket.h"

#include <linux/filter.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace {

// Offsets into what a filter sees of a datagram.
constexpr uint32_t UDP_HEADER = 8;
constexpr uint32_t RTP_HEADER = 12;
constexpr uint32_t VERSION_SHIFT = 6;
constexpr uint32_t VERSION = 2;

// A system that refuses the filter costs only the work of looking at such datagrams.
void discard_what_is_no_packet(int fd)
{
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_LEN, 0),
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, UDP_HEADER + RTP_HEADER, 0, 4),
        BPF_STMT(BPF_LD | BPF_B | BPF_ABS, UDP_HEADER),
        BPF_STMT(BPF_ALU | BPF_RSH | BPF_K, VERSION_SHIFT),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, VERSION, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, UINT32_MAX),
        BPF_STMT(BPF_RET | BPF_K, 0),
    };
    const sock_fprog filter {sizeof program / sizeof program[0], program};
    ::setsockopt(fd, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter);
}

}

QD_Fd qd_open_media_socket()
{
    QD_Fd fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!fd)
        return fd;
    discard_what_is_no_packet(fd.get());
    for (auto [name, size] :
        {std::pair {SO_RCVBUF, QD_MEDIA_RECEIVE_BUFFER}, {SO_SNDBUF, QD_MEDIA_SEND_BUFFER}})
        ::setsockopt(fd.get(), SOL_SOCKET, name, &size, sizeof size); // it may grant less
    return fd;
}

int qd_bind(int fd, uint32_t address, uint16_t port)
{
    sockaddr_in local {};
    local.sin_family = AF_INET;
    local.sin_port = htons(port);
    local.sin_addr.s_addr = address;
    return ::bind(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0 ? 0 : -1;
}
