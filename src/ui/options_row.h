// What the pages of the options dialog have in common.
#pragma once

#include <X11/Intrinsic.h>

/// Adds a label and a text field that only shows to a page, an XmForm, below
/// the widget `above` or, if that is null, at the top.
void qd_add_options_row(Widget page, Widget above, const char* label_name, const char* text_name,
    Widget* label, Widget* text);

/// Puts the middle of a child of an XmForm at so many per cent of the form's width.
void qd_centre(Widget child, int percent);
