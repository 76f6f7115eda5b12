#include "platform/base/utf8.h"

QD_Character qd_first_character(std::string_view text)
{
    const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    if (byte(0) < 0x80)
        return {1, byte(0)};
    const size_t length = byte(0) >= 0xf0 ? 4 : byte(0) >= 0xe0 ? 3 : 2;
    if (byte(0) < 0xc2 || byte(0) > 0xf4 || text.size() < length)
        return {};
    uint32_t code = byte(0) & (0x7fU >> length);
    for (size_t i = 1; i < length; ++i) {
        if (byte(i) >> 6 != 2)
            return {};
        code = code << 6 | (byte(i) & 0x3fU);
    }
    constexpr uint32_t SMALLEST[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xd800 && code < 0xe000;
    if (code < SMALLEST[length] || code > 0x10ffff || surrogate)
        return {};
    return {length, code};
}

std::string qd_printable(std::string_view text)
{
    constexpr std::string_view REPLACEMENT = "\xef\xbf\xbd"; // U+FFFD
    std::string out;
    while (!text.empty()) {
        const QD_Character first = qd_first_character(text);
        const bool shown = first.length > 0 && !first.is_control();
        out += shown ? text.substr(0, first.length) : REPLACEMENT;
        text.remove_prefix(shown ? first.length : 1);
    }
    return out;
}
