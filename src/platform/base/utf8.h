// Texts from elsewhere, character by character (UTF-8, RFC 3629).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

struct QD_Character {
    size_t length = 0; // bytes; 0 for none
    uint32_t code = 0;

    /// Whether it is one of the control characters, U+0000..1F and U+007F..9F.
    bool is_control() const { return code < 0x20 || (code >= 0x7f && code < 0xa0); }
};

/// The character that `text`, not empty, begins with; none if it begins with a
/// byte that no character begins with, is cut short, or holds an overlong form, a
/// surrogate or a code beyond U+10FFFF.
QD_Character qd_first_character(std::string_view text);

/// `text` as it can be shown or printed: bytes that are no UTF-8 and control
/// characters become U+FFFD, one for each byte.
std::string qd_printable(std::string_view text);
