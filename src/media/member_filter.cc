#include "media/member_filter.h"

#include "media/rtp_header.h"
#include "platform/net/udp_socket.h"

#include <linux/filter.h>
#include <sys/socket.h>
#include <vector>

namespace {

// Offsets into what a filter sees of a datagram.
constexpr uint32_t UDP_HEADER = 8;
constexpr uint32_t FIRST_BYTE = UDP_HEADER;
constexpr uint32_t SSRC = UDP_HEADER + 8;
constexpr uint32_t SHORTEST = UDP_HEADER + rtp_fix_header::WIRE_SIZE;
constexpr uint32_t VERSION_SHIFT = 6;

}

int qd_receive_members_only(int sock, const QD_Roster& roster)
{
    std::vector<sock_filter> program {
        BPF_STMT(BPF_LD | BPF_W | BPF_LEN, 0),
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, SHORTEST, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, 0),
        BPF_STMT(BPF_LD | BPF_B | BPF_ABS, FIRST_BYTE),
        BPF_STMT(BPF_ALU | BPF_RSH | BPF_K, VERSION_SHIFT),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, rtp_fix_header::VERSION, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, 0),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, SSRC),
    };
    for (const QD_Roster::Entry& member : roster.entries) {
        program.push_back(
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<uint32_t>(member.id), 0, 1));
        program.push_back(BPF_STMT(BPF_RET | BPF_K, UINT32_MAX));
    }
    program.push_back(BPF_STMT(BPF_RET | BPF_K, 0));
    const sock_fprog filter {static_cast<unsigned short>(program.size()), program.data()};
    if (program.size() <= BPF_MAXINSNS
        && ::setsockopt(sock, SOL_SOCKET, SO_ATTACH_FILTER, &filter, sizeof filter) == 0)
        return 0;
    qd_discard_empty(sock); // the filter there may be is one of an older roster
    return -1;
}
