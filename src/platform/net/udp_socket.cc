#include "platform/net/udp_socket.h"

#include <linux/filter.h>
#include <netinet/in.h>
#include <sys/socket.h>

int qd_discard_empty(int fd)
{
    // Accepts what is longer than a UDP header: an empty datagram would read as an end.
    constexpr uint32_t udp_header = 8;
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_LEN, 0),
        BPF_JUMP(BPF_JMP | BPF_JGT | BPF_K, udp_header, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, UINT32_MAX),
        BPF_STMT(BPF_RET | BPF_K, 0),
    };
    const sock_fprog filter {sizeof program / sizeof program[0], program};
    return ::setsockopt(fd, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter);
}

QD_Fd qd_open_media_socket()
{
    QD_Fd fd(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    if (!fd)
        return fd;
    if (qd_discard_empty(fd.get()) < 0)
        return QD_Fd();
    const int size = QD_MEDIA_RECEIVE_BUFFER; // the system may grant less
    ::setsockopt(fd.get(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
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
