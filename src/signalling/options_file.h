// The file in the home directory that keeps the options.
#pragma once

#include "signalling/options.h"

/// Reads the options from "$HOME/.qd.cfg". Returns 0, or -1 with `options`
/// unchanged if HOME is unset or too long or the file is missing or too short.
/// What follows the first 280 bytes is ignored.
int qd_read_options_file(_options* options);

/// Replaces the file whole: after a crash or on a full disk the old one is
/// still there. Symbolic links are followed and the file's mode is kept; a new
/// one is the user's alone. Returns 0, or -1 if HOME is unset or too long, there
/// is something else than a file, or the new file cannot be opened or written.
int qd_write_options_file(const _options& options);
