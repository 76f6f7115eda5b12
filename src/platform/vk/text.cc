#include "platform/vk/text.h"

#include <Xm/TextF.h>
#include <cstdint>

namespace {

constexpr const char* REPLACEMENT = "\xef\xbf\xbd"; // U+FFFD

/// The length of the sequence at the front of `text`, 0 if there is none that
/// may be shown: overlong forms, surrogates and control characters are refused.
size_t sequence(std::string_view text)
{
    const auto at = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const size_t length = at(0) < 0x80  ? 1
        : at(0) >= 0xc2 && at(0) < 0xe0 ? 2
        : (at(0) & 0xf0) == 0xe0        ? 3
        : at(0) >= 0xf0 && at(0) < 0xf5 ? 4
                                        : 0;
    if (length == 0 || length > text.size())
        return 0;
    uint32_t code = length == 1 ? at(0) : at(0) & (0x7f >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((at(i) & 0xc0) != 0x80)
            return 0;
        code = code << 6 | (at(i) & 0x3f);
    }
    const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
    const bool surrogate = code >= 0xd800 && code <= 0xdfff;
    const bool control = code < 0x20 || (code >= 0x7f && code < 0xa0);
    return overlong || surrogate || control || code > 0x10ffff ? 0 : length;
}

}

std::string VkPrintable(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const size_t length = sequence(text);
        if (length > 0)
            out += text.substr(0, length);
        else
            out += REPLACEMENT;
        text.remove_prefix(length > 0 ? length : 1);
    }
    return out;
}

VkString::VkString(std::string_view text)
{
    std::string printable = VkPrintable(text);
    string_ = XmStringCreateLocalized(printable.data());
}

void VkSetText(Widget field, std::string_view text)
{
    std::string printable = VkPrintable(text);
    XmTextFieldSetString(field, printable.data());
}

void VkMakeReadOnly(Widget field)
{
    static XtResource resource = {const_cast<String>("readOnlyBackground"),
        const_cast<String>("ReadOnlyBackground"), const_cast<String>(XmRPixel), sizeof(Pixel), 0,
        const_cast<String>(XmRString), const_cast<char*>("Black")};
    Pixel background = 0;
    XtGetApplicationResources(field, &background, &resource, 1, nullptr, 0);
    XmChangeColor(field, background);
    XtVaSetValues(
        field, XmNeditable, False, XmNcursorPositionVisible, False, XmNtraversalOn, False, nullptr);
}
