#include "conference/member_name.h"

#include "conference/link_wire.h"

#include <algorithm>
#include <cstdint>

namespace {

/// The length of the character that `text` begins with, 0 if it begins with
/// none that is UTF-8 (RFC 3629) and printable.
size_t character(std::string_view text)
{
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    if (byte(0) < 0x80)
        return byte(0) > ' ' && byte(0) != 0x7f ? 1 : 0;
    const size_t length = byte(0) >= 0xf0 ? 4 : byte(0) >= 0xe0 ? 3 : 2;
    if (byte(0) < 0xc2 || byte(0) > 0xf4 || text.size() < length)
        return 0;
    uint32_t code = byte(0) & (0x7fU >> length);
    for (size_t i = 1; i < length; ++i) {
        if (byte(i) >> 6 != 2)
            return 0;
        code = code << 6 | (byte(i) & 0x3fU);
    }
    constexpr uint32_t SMALLEST[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xd800 && code < 0xe000;
    const bool control = code < 0xa0;
    const bool turns_text
        = (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
    const bool bad
        = code < SMALLEST[length] || code > 0x10ffff || surrogate || control || turns_text;
    return bad ? 0 : length;
}

}

std::string qd_name_trouble(std::string_view name)
{
    if (name.empty())
        return "a member needs a name";
    if (name.size() > QD_MAX_NAME)
        return "the name is longer than " + std::to_string(QD_MAX_NAME) + " bytes";
    bool bad = name[0] == '.' || name[0] == '-' || name.find('/') != std::string_view::npos;
    for (std::string_view rest = name; !bad && !rest.empty();) {
        const size_t length = character(rest);
        bad = length == 0;
        rest.remove_prefix(length);
    }
    return bad ? "a name has no blanks and no '/', and does not begin with '.' or '-'" : "";
}
