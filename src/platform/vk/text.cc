#include "platform/vk/text.h"

#include "platform/base/utf8.h"
#include "platform/vk/resources.h"

#include <Xm/TextF.h>

VkString::VkString(std::string_view text)
{
    std::string printable = qd_printable(text);
    string_ = XmStringCreateLocalized(printable.data());
}

void VkSetText(Widget field, std::string_view text)
{
    std::string printable = qd_printable(text);
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
