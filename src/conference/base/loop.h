// What the companion's loops wait for beside their members.
#pragma once

#include "platform/base/clock.h"
#include "platform/base/fd.h"

/// Blocks those of SIGINT, SIGTERM and SIGHUP that are not ignored in this thread,
/// and gives a descriptor that is readable when one has come. Before any client starts.
QD_Fd qd_block_ending_signals();

/// Takes one signal from that descriptor. Returns whether there was one. Never waits.
bool qd_take_signal(const QD_Fd& signals);

/// The time from now to `time` as poll(2) takes it: not less than that, at most a minute.
int qd_milliseconds_until(QD_Clock::Time time);
