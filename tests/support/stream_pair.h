// A member stream with the test at its other end; bytes written by hand.
#pragma once

#include "platform/net/bytes.h"
#include "platform/net/sock_stream.h"

#include <string>
#include <sys/socket.h>

/// A header image: tag, sender handle, user name, host bytes, body length.
inline std::string qd_header_image(int tag, int handle, const std::string& user,
    const std::string& host, uint32_t size, int session = 0)
{
    std::string image(56, '\0');
    image[0] = static_cast<char>(tag);
    image[1] = static_cast<char>(session);
    image[2] = static_cast<char>(handle);
    image.replace(3, user.size(), user);
    image.replace(23, 4, host);
    qd_put_u32(reinterpret_cast<uint8_t*>(&image[52]), size);
    return image;
}

/// What a stream without a socket was sent, or what its peer has not taken.
inline std::string qd_queued(const SOCK_Stream& stream)
{
    return {stream.queued().begin(), stream.queued().end()};
}

/// What has come to a descriptor by now, up to `limit` bytes.
inline std::string qd_hear(int fd, size_t limit = 1 << 20)
{
    std::string got(limit, 0);
    const ssize_t n = ::recv(fd, got.data(), limit, MSG_DONTWAIT);
    got.resize(n > 0 ? static_cast<size_t>(n) : 0);
    return got;
}

struct QD_Stream_Pair {
    QD_Stream_Pair()
    {
        int ends[2] = {-1, -1};
        ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
        stream = SOCK_Stream(QD_Fd(ends[0]));
        peer = QD_Fd(ends[1]);
    }

    void send(const std::string& bytes) const
    {
        ::send(peer.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }

    std::string hear() const { return qd_hear(peer.get()); }

    SOCK_Stream stream;
    QD_Fd peer;
};
