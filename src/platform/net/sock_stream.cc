#include "platform/net/sock_stream.h"

#include "platform/net/sock_library.h"

#include <cerrno>
#include <poll.h>
#include <sys/socket.h>

int SOCK_Stream::recv_n(void* buf, int n)
{
    auto* to = static_cast<char*>(buf);
    for (int done = 0; done < n;) {
        const ssize_t got = ::recv(fd_.get(), to + done, static_cast<size_t>(n - done), 0);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return static_cast<int>(got);
        done += static_cast<int>(got);
    }
    return n;
}

int SOCK_Stream::send_n(const void* buf, int n)
{
    const auto* from = static_cast<const char*>(buf);
    for (int done = 0; done < n;) {
        const auto left = static_cast<size_t>(n - done);
        const ssize_t sent = ::send(fd_.get(), from + done, left, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0)
            return -1;
        done += static_cast<int>(sent);
    }
    return n;
}

int SOCK_Stream::close()
{
    fd_.reset();
    return 0;
}

int SOCK_Connector::connect(SOCK_Stream* stream, const sockaddr_in* to)
{
    QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (!fd)
        return -1;
    sockaddr_in from {};
    from.sin_family = AF_INET;
    from.sin_addr.s_addr = SOCK_Library::get_bind_address();
    if (from.sin_addr.s_addr != INADDR_ANY
        && ::bind(fd.get(), reinterpret_cast<const sockaddr*>(&from), sizeof from) < 0)
        return -1;

    // The time limit on sending is what bounds connect(); it is lifted afterwards.
    timeval limit {CONNECT_MS / 1000, CONNECT_MS % 1000 * 1000};
    ::setsockopt(fd.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    if (::connect(fd.get(), reinterpret_cast<const sockaddr*>(to), sizeof *to) < 0)
        return -1;
    limit = {};
    ::setsockopt(fd.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    *stream = SOCK_Stream(std::move(fd));
    return 0;
}
