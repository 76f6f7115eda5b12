#include "platform/vk/keys.h"

#include <Xm/Xm.h>

void VkTabStop(Widget control) { XtVaSetValues(control, XmNnavigationType, XmTAB_GROUP, nullptr); }

void VkTabButton(Widget button)
{
    static const XtTranslations returns
        = XtParseTranslationTable("<Key>osfActivate: ArmAndActivate()\n"
                                  "~s ~m ~a <Key>Return: ArmAndActivate()\n");
    XtOverrideTranslations(button, returns);
    VkTabStop(button);
}
