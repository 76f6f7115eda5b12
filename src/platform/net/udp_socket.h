// The datagram socket of one medium.
#pragma once

#include "platform/net/fd.h"

#include <cstdint>

/// The receive buffer asked for; a burst of pictures from a hundred members fits.
constexpr int QD_MEDIA_RECEIVE_BUFFER = 4 << 20;

/// A close-on-exec IPv4 datagram socket that never receives an empty datagram
/// (the kernel discards them) and has as large a receive buffer as the system
/// grants, up to QD_MEDIA_RECEIVE_BUFFER. It holds nothing on failure.
QD_Fd qd_open_media_socket();

/// Has the kernel discard empty datagrams, and no others. Returns 0 or -1.
int qd_discard_empty(int fd);

/// Binds to `port` (host order) at `address` (network order, 0 for all). Returns 0 or -1.
int qd_bind(int fd, uint32_t address, uint16_t port);
