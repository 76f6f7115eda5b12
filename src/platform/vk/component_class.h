// Components that are made by the name of their class.
#pragma once

#include "platform/vk/component.h"

#include <memory>
#include <string_view>

/// Makes a component, hidden, whose widgets are children of `parent`. The caller owns it.
using VkMakeComponent = VkComponent* (*)(const char* name, Widget parent);

/// Makes a class known to those who build user interfaces from descriptions. A
/// class that is known already gets the new `make`. User-interface thread only.
void VkRegisterClass(std::string_view class_name, VkMakeComponent make);

/// A component of a registered class; null if there is none of that name.
std::unique_ptr<VkComponent> VkMakeByClass(
    std::string_view class_name, const char* name, Widget parent);
