// Debug traces.
#pragma once

/// Accepts any format and arguments and prints nothing.
inline void no_print(const char* /*format*/, ...) {}
