#include "platform/vk/component.h"

#include <X11/StringDefs.h>

VkComponent::~VkComponent()
{
    if (!base_)
        return;
    XtRemoveCallback(base_, XtNdestroyCallback, &VkComponent::destroyed, this);
    XtDestroyWidget(base_);
}

void VkComponent::show()
{
    if (base_)
        XtManageChild(base_);
}

void VkComponent::hide()
{
    if (base_)
        XtUnmanageChild(base_);
}

void VkComponent::setBaseWidget(Widget base)
{
    base_ = base;
    XtAddCallback(base_, XtNdestroyCallback, &VkComponent::destroyed, this);
}

void VkComponent::destroyed(Widget, XtPointer self, XtPointer)
{
    auto* component = static_cast<VkComponent*>(self);
    component->base_ = nullptr;
    component->widgetDestroyed();
}
