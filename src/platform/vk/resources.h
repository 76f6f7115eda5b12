// Default resources of components, and the process's part of the toolkit's set-up.
#pragma once

#include <X11/Intrinsic.h>
#include <span>

/// One default. The form of the name decides whom it reaches:
/// "*exitButton.labelString" every widget of that name in the application,
/// ".title" the component's own widget, "label.labelString" the widget "label"
/// somewhere below the component.
struct VkResource {
    const char* name;
    const char* value; // UTF-8
};
using VkResources = std::span<const VkResource>;

/// Sets the locale (UTF-8 characters, "C" numbers) and initialises the toolkit.
/// VkApp calls it, too; a second call does nothing.
void InitEZ();

/// Adds `defaults` to the resources of the display of `any`, beneath what the
/// user and the application defaults file say for the same names. `component`
/// may hold any characters, blanks and dots included. Later widgets see them.
void VkAddDefaults(Widget any, const char* component, VkResources defaults);

/// An entry of the table that XtGetApplicationResources() fills a record from: a
/// field of `type` and `size` at `offset`, made from the text `fallback` where
/// nobody sets it (null: a text that is null).
XtResource VkEntry(const char* name, const char* class_name, const char* type, size_t size,
    size_t offset, const char* fallback);

/// The same for a colour, a Pixel.
XtResource VkColourEntry(
    const char* name, const char* class_name, size_t offset, const char* fallback);

/// Adds the application defaults file that was installed with the program,
/// ../share/X11/app-defaults/CLASS seen from the program's folder, beneath all
/// that the toolkit has found by itself: it looks under /etc and /usr only.
/// Without the file nothing happens.
void VkAddInstalledDefaults(Display* display, const char* class_name);
