// What the keyboard does in our windows beyond the toolkit's own ways.
#pragma once

#include <X11/Intrinsic.h>

/// Makes a control a stop of the Tab key by itself, where the toolkit would have
/// the arrow keys go from one to the next. Stops follow one another as they lie
/// in the window, row by row.
void VkTabStop(Widget control);

/// The same for a push button; and Return presses it, as the space bar does.
void VkTabButton(Widget button);
