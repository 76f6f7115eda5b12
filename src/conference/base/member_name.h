// What a member may be called.
#pragma once

#include <string>
#include <string_view>

/// Why `name` cannot be a member's name, a sentence; "" if it can. A name is
/// shown in windows, told apart in commands, and names a directory: 1 to
/// QD_MAX_NAME bytes of UTF-8 without blanks, control characters and '/'.
std::string qd_name_trouble(std::string_view name);
