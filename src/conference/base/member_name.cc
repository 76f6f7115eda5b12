#include "conference/base/member_name.h"

#include "framework/link/link_wire.h"
#include "platform/base/utf8.h"

namespace {

/// Whether it can be seen and leaves the text around it as it is.
bool is_printable(const QD_Character& character)
{
    const uint32_t code = character.code;
    const bool turns_text
        = (code >= 0x202a && code <= 0x202e) || (code >= 0x2066 && code <= 0x2069);
    return code != ' ' && !character.is_control() && !turns_text;
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
        const QD_Character first = qd_first_character(rest);
        bad = first.length == 0 || !is_printable(first);
        rest.remove_prefix(first.length);
    }
    return bad ? "a name has no blanks and no '/', and does not begin with '.' or '-'" : "";
}
