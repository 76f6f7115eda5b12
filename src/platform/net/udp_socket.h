// The datagram socket of one medium.
#pragma once

#include "platform/base/fd.h"

#include <cstdint>

/// The receive buffer asked for; a burst of pictures from a hundred members fits.
constexpr int QD_MEDIA_RECEIVE_BUFFER = 4 << 20;

/// The send buffer asked for: datagrams that wait for a host's hardware address stay in it.
constexpr int QD_MEDIA_SEND_BUFFER = 1 << 20;

/// A close-on-exec IPv4 datagram socket with buffers as large as the system
/// grants, up to QD_MEDIA_RECEIVE_BUFFER and QD_MEDIA_SEND_BUFFER. The kernel discards what cannot
/// be a media packet: datagrams shorter than an RTP header or of another version
/// than 2. Where the system does not take that filter they are received.
/// It holds nothing on failure.
///
/// The filter is the same for the life of the socket: the kernel frees filters
/// late, and too many that wait to be freed block every process that attaches one.
QD_Fd qd_open_media_socket();

/// Binds to `port` (host order) at `address` (network order, 0 for all). Returns 0 or -1.
int qd_bind(int fd, uint32_t address, uint16_t port);
