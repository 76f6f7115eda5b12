#include "media/read_thread.h"

#include "media/application.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <poll.h>
#include <sys/socket.h>

namespace {

// A datagram shorter than a header is read as if the rest of it were zero.
rtp_fix_header header_of(const char* datagram, int length)
{
    constexpr auto size = static_cast<size_t>(rtp_fix_header::WIRE_SIZE);
    uint8_t wire[size] = {};
    memcpy(wire, datagram, std::min(size, static_cast<size_t>(length)));
    return rtp_fix_header::decode(wire);
}

}

int QD_AppReadThread::run()
{
    const int sock = app_->get_data_sock();
    while (running != 0)
        if (receive(sock) < 0)
            return -1;
    return 0;
}

int QD_AppReadThread::receive(int sock)
{
    pollfd waiting {sock, POLLIN, 0};
    if (::poll(&waiting, 1, WAIT_MS) <= 0)
        return 0;
    // Fresh for each datagram and not filled beforehand: that would cost more than the read.
    const auto buffer = std::make_unique_for_overwrite<char[]>(MAX_DATAGRAM);
    const auto n = static_cast<int>(::recv(sock, buffer.get(), MAX_DATAGRAM, MSG_DONTWAIT));
    if (n < 0 && (errno == EAGAIN || errno == EINTR))
        return 0; // the datagram announced had a wrong checksum
    if (n < 1)
        return -1;
    rtp_fix_header header = header_of(buffer.get(), n);
    char* payload = buffer.get() + rtp_fix_header::WIRE_SIZE;
    app_->process_message(&header, payload, n - rtp_fix_header::WIRE_SIZE);
    return 0;
}
