#include "platform/net/sock_stream.h"

#include "platform/base/clock.h"
#include "platform/net/sock_library.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace {

constexpr size_t CHUNK = 16 << 10;
constexpr int SEND_BUFFER = 64 << 10; // so that a peer that reads nothing is soon noticed

void set_option(int fd, int level, int name, int value)
{
    ::setsockopt(fd, level, name, &value, sizeof value);
}

uint32_t peer_host(int fd)
{
    sockaddr_in peer {};
    socklen_t size = sizeof peer;
    const int result = ::getpeername(fd, reinterpret_cast<sockaddr*>(&peer), &size);
    return result == 0 && peer.sin_family == AF_INET ? peer.sin_addr.s_addr : 0;
}

bool would_wait() { return errno == EAGAIN || errno == EWOULDBLOCK; }

}

SOCK_Stream::SOCK_Stream(QD_Fd fd) : fd_(std::move(fd)), peer_host_(peer_host(fd_.get()))
{
    set_option(fd_.get(), IPPROTO_TCP, TCP_NODELAY, 1);
    set_option(fd_.get(), SOL_SOCKET, SO_SNDBUF, SEND_BUFFER);
    set_option(fd_.get(), SOL_SOCKET, SO_KEEPALIVE, 1);
    set_option(fd_.get(), IPPROTO_TCP, TCP_KEEPIDLE, 60);
    set_option(fd_.get(), IPPROTO_TCP, TCP_KEEPINTVL, 10);
    set_option(fd_.get(), IPPROTO_TCP, TCP_KEEPCNT, 6);
}

bool SOCK_Stream::fetch(size_t n)
{
    while (in_.size() < n && state_ == OPEN && fd_) {
        uint8_t chunk[CHUNK];
        const ssize_t got
            = ::recv(fd_.get(), chunk, std::min(n - in_.size(), sizeof chunk), MSG_DONTWAIT);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0 && would_wait())
            return false;
        if (got > 0)
            in_.insert(in_.end(), chunk, chunk + got);
        else
            state_ = got == 0 ? ENDED : FAILED;
    }
    return in_.size() >= n || state_ != OPEN;
}

int SOCK_Stream::recv_n(void* buf, int n)
{
    const auto wanted = static_cast<size_t>(n);
    fetch(wanted);
    if (in_.size() < wanted)
        return state_ == ENDED ? 0 : -1;
    memcpy(buf, in_.data(), wanted);
    in_.erase(in_.begin(), in_.begin() + n);
    return n;
}

int SOCK_Stream::send_n(const void* buf, int n)
{
    if (closed_ || state_ == FAILED)
        return -1;
    if (out_.size() + static_cast<size_t>(n) > MAX_QUEUED) {
        end(FAILED);
        return -1;
    }
    const auto* from = static_cast<const uint8_t*>(buf);
    out_.insert(out_.end(), from, from + n);
    return flush() == 0 ? n : -1;
}

int SOCK_Stream::flush()
{
    size_t done = 0;
    while (done < out_.size() && fd_) {
        const ssize_t sent = ::send(
            fd_.get(), out_.data() + done, out_.size() - done, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0 && would_wait())
            break;
        if (sent < 0) {
            end(FAILED);
            return -1;
        }
        done += static_cast<size_t>(sent);
    }
    out_.erase(out_.begin(), out_.begin() + static_cast<std::ptrdiff_t>(done));
    return 0;
}

int SOCK_Stream::close()
{
    if (!closed_)
        end(ENDED);
    return 0;
}

// The descriptor may be watched: it is left to whoever watches it, who finds it at its end.
void SOCK_Stream::end(State state)
{
    closed_ = true;
    state_ = state;
    in_.clear();
    out_.clear();
    ::shutdown(fd_.get(), SHUT_RDWR);
}

namespace {

// A socket on its way to `to`, none on failure.
QD_Fd begin_call(const sockaddr_in& to)
{
    QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!fd)
        return fd;
    sockaddr_in from {};
    from.sin_family = AF_INET;
    from.sin_addr.s_addr = SOCK_Library::get_bind_address();
    if (from.sin_addr.s_addr != INADDR_ANY
        && ::bind(fd.get(), reinterpret_cast<const sockaddr*>(&from), sizeof from) < 0)
        return QD_Fd();
    if (::connect(fd.get(), reinterpret_cast<const sockaddr*>(&to), sizeof to) < 0
        && errno != EINPROGRESS)
        return QD_Fd();
    return fd;
}

bool has_connected(int fd)
{
    int error = 0;
    socklen_t size = sizeof error;
    return ::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) == 0 && error == 0;
}

}

void SOCK_Connector::connect(std::span<Call> calls, int milliseconds)
{
    const QD_Clock& clock = QD_Clock::real();
    const QD_Clock::Time end = clock.now() + std::chrono::milliseconds(milliseconds);
    std::vector<QD_Fd> sockets;
    std::vector<pollfd> polled;
    for (Call& call : calls) {
        sockets.push_back(begin_call(call.to));
        polled.push_back({sockets.back().get(), POLLOUT, 0});
    }
    const auto on_its_way = [](const pollfd& one) { return one.fd >= 0; };
    while (std::any_of(polled.begin(), polled.end(), on_its_way)) {
        // Past the end still one look: a process that was stopped meanwhile finds answers there.
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - clock.now()).count();
        const auto wait = static_cast<int>(std::max<long>(left, 0));
        const int found = ::poll(polled.data(), polled.size(), wait);
        if (found == 0)
            return;
        if (found < 0)
            continue;
        for (size_t i = 0; i < polled.size(); ++i) {
            if (polled[i].fd < 0 || polled[i].revents == 0)
                continue;
            polled[i].fd = -1; // poll passes over it
            calls[i].connected = has_connected(sockets[i].get());
            if (calls[i].connected)
                *calls[i].stream = SOCK_Stream(std::move(sockets[i]));
        }
    }
}

int SOCK_Connector::connect(SOCK_Stream* stream, const sockaddr_in* to, int milliseconds)
{
    Call call {*to, stream};
    connect({&call, 1}, milliseconds);
    return call.connected ? 0 : -1;
}
