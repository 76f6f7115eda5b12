// The colours, fonts and shapes of the application.
#pragma once

#include "platform/vk/resources.h"

/// Everything in it can be overridden in the user's resources, entry by entry.
VkResources VkLooks();

/// Makes the fonts that VkLooks(), already added, describes the default of all
/// widgets, beneath the user's. Made once here: named in a resource, they would
/// be made for every widget anew and kept for good.
void VkAddFonts(Widget any);
