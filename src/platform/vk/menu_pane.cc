#include "platform/vk/menu_pane.h"

#include <Xm/CascadeB.h>
#include <Xm/PushB.h>
#include <Xm/RowColumn.h>
#include <Xm/Xm.h>

VkMenuPane::VkMenuPane(const char* name, Widget bar)
{
    char menu[] = "menu";
    pane_ = XmCreatePulldownMenu(bar, menu, nullptr, 0);
    XtVaCreateManagedWidget(name, xmCascadeButtonWidgetClass, bar, XmNsubMenuId, pane_, nullptr);
}

Widget VkMenuPane::add_action(const char* name, XtCallbackProc callback, XtPointer client)
{
    Widget entry = XtVaCreateManagedWidget(name, xmPushButtonWidgetClass, pane_, nullptr);
    XtAddCallback(entry, XmNactivateCallback, callback, client);
    return entry;
}
