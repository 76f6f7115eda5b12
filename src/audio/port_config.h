// How the ports of both directions are set up.
#pragma once

#include "platform/al/al.h"

/// Opens `port` by the name and in the direction ("r" or "w") given: 16-bit
/// mono, a queue of 1600 samples. What was open before is closed. Returns 0, or
/// -1 with a line on standard error about the setting that failed; `conf` is
/// then kept for qd_close_audio_port(). `stream`: see qd_al_set_stream().
int qd_open_audio_port(
    const char* name, const char* direction, ALconfig& conf, ALport& port, long stream = 0);

/// Closes what is open, releases the configuration, and clears both.
void qd_close_audio_port(ALconfig& conf, ALport& port);
