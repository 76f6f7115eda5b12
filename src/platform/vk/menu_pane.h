// One pane of a menu bar.
#pragma once

#include <X11/Intrinsic.h>

/// Texts, mnemonics and accelerators come from resources by the widgets' names:
/// the pane's name is its title's in the bar, an action's name is its entry's.
/// Owned by the window; the widgets go with the menu bar. User-interface thread only.
class VkMenuPane {
public:
    VkMenuPane(const char* name, Widget bar);

    /// Appends an entry that calls `callback` with `client`. Returns its widget.
    Widget add_action(const char* name, XtCallbackProc callback, XtPointer client);

private:
    Widget pane_;
};
