#include "platform/vk/text.h"

#include "platform/net/utf8.h"
#include "platform/vk/resources.h"

#include <Xm/TextF.h>

namespace {

constexpr std::string_view REPLACEMENT = "\xef\xbf\xbd"; // U+FFFD

}

std::string VkPrintable(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const QD_Character first = qd_first_character(text);
        const bool shown = first.length > 0 && !first.is_control();
        out += shown ? text.substr(0, first.length) : REPLACEMENT;
        text.remove_prefix(shown ? first.length : 1);
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
    static XtResource resource
        = VkColourEntry("readOnlyBackground", "ReadOnlyBackground", 0, "Black");
    Pixel background = 0;
    XtGetApplicationResources(field, &background, &resource, 1, nullptr, 0);
    XmChangeColor(field, background);
    XtVaSetValues(
        field, XmNeditable, False, XmNcursorPositionVisible, False, XmNtraversalOn, False, nullptr);
}
