#include "framework/link/event.h"

#include "platform/base/bytes.h"
#include "platform/base/fd.h"
#include "platform/base/process_end.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int STATUS_SET_UP = 0;
constexpr int STATUS_READ = 1;
constexpr std::chrono::seconds EVENT_BOUND {5};

// Media threads may run: their link to the framework is gone, but not they.
[[noreturn]] void fail(const char* message, int status)
{
    perror(message);
    qd_end_process(status);
}

/// The bound on one whole event, in either direction.
class Deadline {
public:
    /// Waits until `fd` can be read or written. False when the bound has passed
    /// and it still cannot.
    bool wait(int fd, short event) const
    {
        for (;;) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end_ - Clock::now());
            pollfd waiting {fd, event, 0};
            const int ready
                = ::poll(&waiting, 1, static_cast<int>(std::max<long>(left.count(), 0)));
            if (ready >= 0)
                return ready > 0;
        }
    }

private:
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end_ = Clock::now() + EVENT_BOUND;
};

int argument(const char* text, const char* message)
{
    if (text == nullptr)
        fail(message, STATUS_SET_UP);
    return atoi(text);
}

void write_all(int fd, const void* buf, size_t n, const Deadline& deadline)
{
    const auto* from = static_cast<const char*>(buf);
    while (n > 0) {
        const ssize_t sent = deadline.wait(fd, POLLOUT)
            ? ::send(fd, from, n, MSG_NOSIGNAL | MSG_DONTWAIT)
            : (errno = ETIMEDOUT, -1);
        if (sent < 0 && (errno == EINTR || errno == EAGAIN))
            continue;
        if (sent < 0)
            fail("write", STATUS_SET_UP);
        from += sent;
        n -= static_cast<size_t>(sent);
    }
}

void write_int(int fd, int value, const Deadline& deadline)
{
    uint8_t wire[4];
    qd_put_u32(wire, static_cast<uint32_t>(value));
    write_all(fd, wire, sizeof wire, deadline);
}

void read_all(int fd, void* buf, size_t n, const Deadline& deadline)
{
    auto* to = static_cast<char*>(buf);
    while (n > 0) {
        const ssize_t got = deadline.wait(fd, POLLIN) ? ::read(fd, to, n) : (errno = ETIMEDOUT, -1);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            fail("readAll", STATUS_READ);
        if (got == 0)
            qd_end_process(STATUS_READ);
        to += got;
        n -= static_cast<size_t>(got);
    }
}

int read_int(int fd, const Deadline& deadline)
{
    uint8_t wire[4];
    read_all(fd, wire, sizeof wire, deadline);
    return static_cast<int>(qd_get_u32(wire));
}

}

int registerApp(int argc, char** argv)
{
    if (argc != 5)
        fail("invalid arguments", STATUS_SET_UP);
    const int aid = argument(argv[1], "null AID argument");
    const int sid = argument(argv[2], "null SID argument");
    const int at = argument(argv[3], "null AT argument");
    const auto port = static_cast<uint16_t>(argument(argv[4], "null port argument"));

    sockaddr_in framework {};
    framework.sin_family = AF_INET;
    framework.sin_port = htons(port);
    framework.sin_addr.s_addr = INADDR_ANY; // connecting to it reaches this machine
    QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (fd && fd.get() <= STDERR_FILENO) // 0 would read as "no link"
        fd.reset(::fcntl(fd.get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    if (!fd)
        fail("socket", STATUS_SET_UP);
    if (::connect(fd.get(), reinterpret_cast<const sockaddr*>(&framework), sizeof framework) < 0)
        fail("connect", STATUS_SET_UP);
    const int at_once = 1; // the link carries small messages, each of them wanted now
    ::setsockopt(fd.get(), IPPROTO_TCP, TCP_NODELAY, &at_once, sizeof at_once);

    const Deadline deadline;
    write_int(fd.get(), aid, deadline);
    write_int(fd.get(), sid, deadline);
    write_int(fd.get(), at, deadline);
    return fd.release();
}

void readAll(int fd, void* buf, unsigned n) { read_all(fd, buf, n, Deadline()); }

void sendEvent(int fd, const Event* e)
{
    const Deadline deadline;
    write_int(fd, e->type, deadline);
    write_int(fd, e->len, deadline);
    write_all(fd, e->data, static_cast<size_t>(e->len), deadline);
}

Event* receiveEvent(int fd)
{
    const Deadline deadline;
    const int type = read_int(fd, deadline);
    const int len = read_int(fd, deadline);
    if (len < 0 || len > Event::MAX_LEN) {
        errno = EMSGSIZE;
        fail("readAll", STATUS_READ);
    }
    const auto payload = std::make_unique<char[]>(static_cast<size_t>(len));
    read_all(fd, payload.get(), static_cast<size_t>(len), deadline);
    Event* event = createEvent(type, len, payload.get());
    if (type == Event::ECHO)
        sendEvent(fd, event);
    return event;
}

Event* createEvent(int type, int len, const char* data)
{
    auto* event = new Event {type, len, new char[static_cast<size_t>(len)]};
    if (len > 0)
        memcpy(event->data, data, static_cast<size_t>(len));
    return event;
}

void destroyEvent(Event* e)
{
    delete[] e->data;
    delete e;
}

int getType(const Event* e) { return e->type; }

int getLen(const Event* e) { return e->len; }

char* getData(const Event* e)
{
    char* copy = new char[static_cast<size_t>(e->len)];
    if (e->len > 0)
        memcpy(copy, e->data, static_cast<size_t>(e->len));
    return copy;
}
