#include "signalling/msg_header.h"

#include "platform/base/bytes.h"
#include "platform/base/trace.h"
#include "platform/net/sock_library.h"
#include "signalling/peer_lines.h"
#include "signalling/session_control.h"

#include <arpa/inet.h>
#include <cstring>

namespace {

// Where each field lies in the image.
constexpr size_t TAG = 0;
constexpr size_t SESSION = 1;
constexpr size_t SENDER = 2;
constexpr size_t RECEIVER = 27;
constexpr size_t SIZE = 52;

// A participant in a header: one byte of its handle, the name, the host.
void put_participant(uint8_t* out, const _participant& one)
{
    out[0] = static_cast<uint8_t>(one.handle);
    memcpy(out + 1, one.user, strnlen(one.user, sizeof one.user - 1));
    qd_put_u32(out + 21, ntohl(one.host));
}

_participant get_participant(const uint8_t* in)
{
    _participant one;
    one.handle = in[0];
    const auto* name = reinterpret_cast<const char*>(in + 1);
    memcpy(one.user, name, strnlen(name, sizeof one.user - 1));
    one.host = htonl(qd_get_u32(in + 21));
    return one;
}

}

QD_Msg_Header::QD_Msg_Header()
{
    sender_.set_user(QD_Session_Ref()->get_options()->local_name);
    sender_.host = SOCK_Library::getlocalhostid();
}

int32_t QD_Msg_Header::announced_size(std::span<const uint8_t> image)
{
    return static_cast<int32_t>(qd_get_u32(&image[SIZE]));
}

int QD_Msg_Header::recv(SOCK_Stream* stream)
{
    no_print("QD_Msg_Header::recv\n");
    const int got = stream->recv_n(buffer_.data(), static_cast<int>(buffer_.size()));
    if (got == -1)
        qd_peer_lines().print(stream->get_peer_host(), "QD_Msg_Header::recv\n");
    if (got <= 0)
        return got;

    tag_ = buffer_[TAG];
    session_ = buffer_[SESSION];
    sender_ = get_participant(&buffer_[SENDER]);
    receiver_ = get_participant(&buffer_[RECEIVER]);
    size_ = announced_size(buffer_);
    char host[SOCK_Library::NAME_SIZE];
    SOCK_Library::getdotted(sender_.host, host);
    qd_peer_lines().print(stream->get_peer_host(),
        "QD_Msg_Header: received message of type %d from %s, size %d\n", tag_, host, size_);
    return 1;
}

int QD_Msg_Header::send(SOCK_Stream* stream)
{
    buffer_.fill(0);
    buffer_[TAG] = tag_;
    buffer_[SESSION] = session_;
    put_participant(&buffer_[SENDER], sender_);
    put_participant(&buffer_[RECEIVER], receiver_);
    qd_put_u32(&buffer_[SIZE], static_cast<uint32_t>(size_));
    return stream->send_n(buffer_.data(), static_cast<int>(buffer_.size()));
}
