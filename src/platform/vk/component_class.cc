#include "platform/vk/component_class.h"

#include <map>
#include <string>

namespace {

using Classes = std::map<std::string, VkMakeComponent, std::less<>>;

Classes& classes()
{
    static Classes all;
    return all;
}

}

void VkRegisterClass(std::string_view class_name, VkMakeComponent make)
{
    classes().insert_or_assign(std::string(class_name), make);
}

std::unique_ptr<VkComponent> VkMakeByClass(
    std::string_view class_name, const char* name, Widget parent)
{
    const auto found = classes().find(class_name);
    return std::unique_ptr<VkComponent>(
        found == classes().end() ? nullptr : found->second(name, parent));
}
