#include "media/read_thread.h"

#include "media/application.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>

/// What a batch is fetched into. Kept, and not filled beforehand: only what
/// datagrams have touched takes memory.
struct QD_AppReadThread::Buffers {
    mmsghdr messages[BATCH] = {};
    iovec parts[BATCH] = {};
    std::unique_ptr<char[]> bytes
        = std::make_unique_for_overwrite<char[]>(static_cast<size_t>(BATCH) * MAX_DATAGRAM);

    Buffers()
    {
        for (size_t i = 0; i < BATCH; ++i) {
            parts[i] = {&bytes[i * MAX_DATAGRAM], MAX_DATAGRAM};
            messages[i].msg_hdr.msg_iov = &parts[i];
            messages[i].msg_hdr.msg_iovlen = 1;
        }
    }
};

QD_AppReadThread::QD_AppReadThread(QD_Application* app) :
    SprocThread("receive"),
    app_(app),
    buffers_(std::make_unique<Buffers>())
{
}

QD_AppReadThread::~QD_AppReadThread() = default;

int QD_AppReadThread::run()
{
    const int sock = app_->get_data_sock();
    pollfd waiting[] = {{sock, POLLIN, 0}, {wake_fd(), POLLIN, 0}};
    while (running != 0) {
        if (::poll(waiting, std::size(waiting), -1) > 0 && waiting[0].revents != 0
            && receive(sock) < 0)
            return -1;
    }
    return 0;
}

int QD_AppReadThread::receive(int sock)
{
    const int count = ::recvmmsg(sock, buffers_->messages, BATCH, MSG_DONTWAIT, nullptr);
    if (count < 0) // a datagram that was announced may have had a wrong checksum
        return errno == EAGAIN || errno == EINTR ? 0 : -1;
    // Read after the batch, so that it knows everybody who was announced before it came.
    const QD_Roster_Ptr roster = app_->get_roster();
    for (size_t i = 0; i < static_cast<size_t>(count); ++i)
        hand_over(static_cast<char*>(buffers_->parts[i].iov_base),
            static_cast<int>(buffers_->messages[i].msg_len), *roster);
    return 0;
}

// A datagram shorter than a header is read as if the rest of it were zero. An
// empty one has no content; the system may let it through.
void QD_AppReadThread::hand_over(char* datagram, int length, const QD_Roster& roster)
{
    constexpr int SIZE = rtp_fix_header::WIRE_SIZE;
    uint8_t wire[SIZE] = {};
    memcpy(wire, datagram, static_cast<size_t>(std::min(SIZE, length)));
    rtp_fix_header header = rtp_fix_header::decode(wire);
    if (length > 0 && roster.has(static_cast<int>(header.ssrc)))
        app_->process_message(&header, datagram + SIZE, length - SIZE);
}
