// A member stream with the test at its other end; bytes written by hand.
#pragma once

#include "platform/base/bytes.h"
#include "signalling/svc_handler.h"

#include <string>
#include <sys/socket.h>

/// A header image: tag, sender handle, user name, host bytes, body length.
inline std::string qd_header_image(
    int tag, int handle, const std::string& user, const std::string& host, size_t size)
{
    std::string image(56, '\0');
    image[0] = static_cast<char>(tag);
    image[2] = static_cast<char>(handle);
    image.replace(3, user.size(), user);
    image.replace(23, 4, host);
    qd_put_u32(reinterpret_cast<uint8_t*>(&image[52]), static_cast<uint32_t>(size));
    return image;
}

struct QD_Stream_Pair {
    QD_Stream_Pair()
    {
        int ends[2] = {-1, -1};
        ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
        stream = SOCK_Stream(QD_Fd(ends[0]));
        peer = QD_Fd(ends[1]);
    }

    /// Has a handler serve the stream, which becomes the handler's.
    SOCK_Stream* serve(std::unique_ptr<QD_Svc_Handler> handler, Reactor* reactor)
    {
        SOCK_Stream* const served = handler->peer();
        *served = std::move(stream);
        handler->open(reactor);
        reactor->adopt(std::move(handler));
        return served;
    }

    void send(const std::string& bytes) const
    {
        ::send(peer.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
    }

    SOCK_Stream stream;
    QD_Fd peer;
};
