// The main window's operations as toolkit actions, for keys of the user's own.
#pragma once

#include <X11/Intrinsic.h>

/// Registers quit(), reset(), options(), audioPanel(), statistics(), chat(),
/// conf(), overview() and users(). Without a binding in the user's resources
/// nothing calls them; say
///     *mainForm*translations: #override Ctrl<Key>R: reset()
/// to have those that no menu offers. Parameters are ignored, and so is an
/// action while there is no main window. A second call does nothing.
void qd_add_actions(XtAppContext context);
