#include "platform/vk/component.h"

#include <X11/StringDefs.h>

VkComponent::~VkComponent()
{
    if (base_ == nullptr)
        return;
    XtRemoveCallback(base_, XtNdestroyCallback, &VkComponent::destroyed, this);
    destroy_base();
}

// A text or a scroll bar grabs the keyboard while a button is held in it. The toolkit would send
// the next key, even one of its own making, to the widget that is gone.
void VkComponent::destroy_base()
{
    if (XtIsRealized(base_))
        XtUngrabKeyboard(base_, CurrentTime);
    XtDestroyWidget(base_);
}

void VkComponent::show()
{
    if (base_ != nullptr)
        XtManageChild(base_);
}

void VkComponent::hide()
{
    if (base_ != nullptr)
        XtUnmanageChild(base_);
}

void VkComponent::set_base_widget(Widget base)
{
    base_ = base;
    XtAddCallback(base_, XtNdestroyCallback, &VkComponent::destroyed, this);
}

void VkComponent::destroyed(Widget, XtPointer self, XtPointer)
{
    auto* component = static_cast<VkComponent*>(self);
    component->base_ = nullptr;
    component->widget_destroyed();
}
