// The header of every message on a member stream: 56 bytes on the wire.
#pragma once

#include "platform/net/sock_stream.h"
#include "signalling/participant.h"

#include <array>
#include <cstdint>
#include <span>

/// On the wire: tag, session, the sender (low byte of its handle, 20 bytes of
/// user name, host), the receiver likewise, and the length of the body that
/// follows, signed 32 bits big-endian. User-interface thread.
class QD_Msg_Header {
public:
    static constexpr size_t IMAGE_SIZE = 56;

    /// Sent by the local user, handle 0, without a body. The tag is left to be set.
    QD_Msg_Header();

    /// Takes a header from the stream and prints what it is. Returns 1, 0 if
    /// the peer has closed before its end, -1 on error.
    int recv(SOCK_Stream* stream);

    /// Returns the number of bytes, -1 on error.
    int send(SOCK_Stream* stream);

    /// The body length that a header image announces, whatever it is worth.
    static int32_t announced_size(std::span<const uint8_t> image);

    unsigned char get_tag() const { return tag_; }
    unsigned char get_session() const { return session_; }
    void get_sender(_participant* out) const { *out = sender_; }
    void get_receiver(_participant* out) const { *out = receiver_; }
    int get_size() const { return size_; }
    void set_tag(unsigned char tag) { tag_ = tag; }
    void set_session(unsigned char session) { session_ = session; }
    void set_sender(const _participant* sender) { sender_ = *sender; }
    void set_sender_id(unsigned char id) { sender_.handle = id; }
    void set_receiver(const _participant* receiver) { receiver_ = *receiver; }
    void set_size(int size) { size_ = size; }

private:
    uint8_t tag_ = 0;
    uint8_t session_ = 0;
    _participant sender_;
    _participant receiver_;
    int32_t size_ = 0;
    std::array<uint8_t, IMAGE_SIZE> buffer_ {};
};
