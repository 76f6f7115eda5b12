// Keeps datagrams that no member sent out of a media socket's receive buffer.
#pragma once

#include "signalling/roster.h"

/// Has the kernel discard, from now on, every datagram that is shorter than an
/// RTP header, of another version, or not in the name of somebody in the
/// roster, however many come. What waits already stays. Returns 0, or -1 if the
/// system does not take the filter: then all but empty datagrams are received.
int qd_receive_members_only(int sock, const QD_Roster& roster);
