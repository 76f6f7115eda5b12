// A header and the body it announces, on a stream.
#pragma once

#include "platform/base/trace.h"
#include "signalling/peer_lines.h"

/// What is received or sent whole. The body belongs to the message until
/// destroy(); the destructor leaves it to whoever has taken the pointer.
template <class HEADER, class STREAM> class Message {
public:
    /// A peer that announces a longer body is in error.
    static constexpr int MAX_BODY = 64 << 10;

    Message() = default;
    explicit Message(const HEADER& header) : header_(header) {}
    virtual ~Message() = default;
    Message(const Message&) = delete;
    Message& operator=(const Message&) = delete;

    /// Returns 1, 0 if the peer has closed before the end of the message, -1 on
    /// error. A message without a body leaves an earlier one as it is.
    virtual int recv(STREAM* stream);

    /// Returns 0, or -1 on error.
    virtual int send(STREAM* stream);

    /// Does what the message asks for.
    virtual int execute() = 0;

    /// Releases the body. Returns 0.
    virtual int destroy()
    {
        delete[] body_;
        body_ = nullptr;
        return 0;
    }

    /// Takes over a body made by new[], `size` bytes long, in place of the earlier one.
    virtual void set(char* body, int size)
    {
        destroy();
        body_ = body;
        header_.set_size(size);
    }

protected:
    HEADER header_;
    char* body_ = nullptr;

private:
    static int failed(const STREAM* stream)
    {
        qd_peer_lines().print(stream->get_peer_host(), "Message::recv\n");
        return -1;
    }
};

template <class HEADER, class STREAM> int Message<HEADER, STREAM>::recv(STREAM* stream)
{
    no_print("Message::recv\n");
    const int got = header_.recv(stream);
    if (got <= 0)
        return got == 0 ? 0 : failed(stream);

    const int size = header_.get_size();
    no_print("Message::recv, body size = %d\n", size);
    if (size <= 0)
        return 1;
    if (size > MAX_BODY)
        return failed(stream);
    destroy();
    body_ = new char[static_cast<size_t>(size)];
    const int body = stream->recv_n(body_, size);
    if (body <= 0)
        return body == 0 ? 0 : failed(stream);
    return 1;
}

template <class HEADER, class STREAM> int Message<HEADER, STREAM>::send(STREAM* stream)
{
    const int size = header_.get_size();
    if (header_.send(stream) == -1
        || (size > 0 && (body_ == nullptr || stream->send_n(body_, size) == -1))) {
        qd_peer_lines().print(stream->get_peer_host(), "Message::send\n");
        return -1;
    }
    return 0;
}
