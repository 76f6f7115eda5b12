#include "ui/dpy_form.h"

#include "platform/base/utf8.h"
#include "platform/vk/text.h"

#include <Xm/TextF.h>

namespace {

/// The same text again would only flicker.
void set_changed(Widget field, const char* text)
{
    char* shown = XmTextFieldGetString(field);
    const bool changed = qd_printable(text) != shown;
    XtFree(shown);
    if (changed)
        VkSetText(field, text);
}

}

void Dpy_form::setStatus(const char* text) { set_changed(_status_text, text); }

void Dpy_form::setStatistics(const char* first, const char* second)
{
    set_changed(_fps_text, first);
    set_changed(_kbps_text, second);
}
