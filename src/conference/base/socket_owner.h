// Which process is at the other end of a connection within this machine.
#pragma once

#include <sys/types.h>

/// Whether process `pid`, run by this user, holds the far end of `fd`, an
/// accepted IPv4 TCP connection from this machine. Asks the kernel's socket
/// diagnostics (sock_diag(7)) for the far end's owner and inode and looks for the
/// inode among the descriptors of the process. False if any of it cannot be had.
bool qd_far_end_is(int fd, pid_t pid);
