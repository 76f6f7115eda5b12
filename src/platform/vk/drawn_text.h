// What the toolkit keeps of a widget's window once it has drawn text there.
#pragma once

#include <X11/Intrinsic.h>

/// To be called when `top` is about to be destroyed and its windows still
/// exist: releases what was kept of it and of all widgets below. User-interface thread only.
void VkForgetDrawnText(Widget top);
