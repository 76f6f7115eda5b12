// The notice for what is not there yet.
#pragma once

#include <X11/Intrinsic.h>

/// Says that `what` ("MainForm::conf") is not implemented: one line on standard
/// error and a dialog beside the window of `near` that holds nothing up (null:
/// the line alone). A further notice takes over a dialog that is still open.
void VkUnimplemented(Widget near, const char* what);
