// The commands for conferences across machines.
#pragma once

#include "conference/base/command_line.h"

/// Takes part in a conference of a broker until the member leaves. Returns the
/// program's status; what is wrong is said on standard error.
int qd_join_conference(QD_Command_Line line);

/// Starts a broker of its own, prints the line by which others join, and keeps
/// it open until Ctrl-C. Takes part unless told not to. Returns the status.
int qd_host_conference(QD_Command_Line line);
