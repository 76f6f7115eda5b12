// The colours, fonts and shapes of the application.
#pragma once

#include "platform/vk/resources.h"

/// Everything in it can be overridden in the user's resources, entry by entry.
VkResources VkLooks();
