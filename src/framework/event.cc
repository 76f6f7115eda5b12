#include "framework/event.h"

#include "platform/net/bytes.h"
#include "platform/net/fd.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace {

constexpr int STATUS_SET_UP = 0;
constexpr int STATUS_READ = 1;
constexpr int LINK_SECONDS = 5; // how long the framework may take over the rest of an event

[[noreturn]] void fail(const char* message, int status)
{
    perror(message);
    exit(status);
}

int argument(const char* text, const char* message)
{
    if (text == nullptr)
        fail(message, STATUS_SET_UP);
    return atoi(text);
}

void write_all(int fd, const void* buf, size_t n)
{
    const auto* from = static_cast<const char*>(buf);
    while (n > 0) {
        const ssize_t sent = ::send(fd, from, n, MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0)
            fail("write", STATUS_SET_UP);
        from += sent;
        n -= static_cast<size_t>(sent);
    }
}

void write_int(int fd, int value)
{
    uint8_t wire[4];
    qd_put_u32(wire, static_cast<uint32_t>(value));
    write_all(fd, wire, sizeof wire);
}

int read_int(int fd)
{
    uint8_t wire[4];
    readAll(fd, wire, sizeof wire);
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

    // Events come whole; a framework that stops in the middle of one, or does not
    // read, has failed.
    const timeval limit {LINK_SECONDS, 0};
    ::setsockopt(fd.get(), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    ::setsockopt(fd.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);

    write_int(fd.get(), aid);
    write_int(fd.get(), sid);
    write_int(fd.get(), at);
    return fd.release();
}

void readAll(int fd, void* buf, unsigned n)
{
    auto* to = static_cast<char*>(buf);
    while (n > 0) {
        const ssize_t got = ::read(fd, to, n);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            fail("readAll", STATUS_READ);
        if (got == 0)
            exit(STATUS_READ);
        to += got;
        n -= static_cast<unsigned>(got);
    }
}

void sendEvent(int fd, const Event* e)
{
    write_int(fd, e->type);
    write_int(fd, e->len);
    write_all(fd, e->data, static_cast<size_t>(e->len));
}

Event* receiveEvent(int fd)
{
    const int type = read_int(fd);
    const int len = read_int(fd);
    if (len < 0 || len > Event::MAX_LEN) {
        errno = EMSGSIZE;
        fail("readAll", STATUS_READ);
    }
    const auto payload = std::make_unique<char[]>(static_cast<size_t>(len));
    readAll(fd, payload.get(), static_cast<unsigned>(len));
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
