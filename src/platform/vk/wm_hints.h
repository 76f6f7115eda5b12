// What the window manager offers the user around a window.
#pragma once

#include <X11/Intrinsic.h>

/// Asks for decorations and functions for the shell; each flag is 0 (without) or 1 (with):
/// `title`     the title bar; the plain border is always there,
/// `resize`    the handles for resizing, and resizing itself,
/// `menu`      the window menu's button,
/// `minimize`  the button and the function that make it an icon,
/// `maximize`  the button and the function that fill the screen,
/// `move`      moving it,
/// `close`     closing it, which ends in the window's handleWmDeleteMessage().
/// To be called before the shell is realised. Without `resize`, VkSimpleWindow
/// also fixes the size for window managers that do not know these hints.
void VkConfigureWM(
    Widget shell, int title, int resize, int menu, int minimize, int maximize, int move, int close);
