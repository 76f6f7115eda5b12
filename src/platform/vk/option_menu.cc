#include "platform/vk/option_menu.h"

#include <Xm/PushB.h>
#include <Xm/RowColumn.h>
#include <algorithm>
#include <span>

namespace {

std::span<const Widget> items(Widget menu)
{
    WidgetList list = nullptr;
    Cardinal count = 0;
    XtVaGetValues(menu, XmNchildren, &list, XmNnumChildren, &count, nullptr);
    return {list, count};
}

}

VkOptionMenu::VkOptionMenu(const char* name, Widget parent) : VkComponent(name)
{
    char menu[] = "menu";
    menu_ = XmCreatePulldownMenu(parent, menu, nullptr, 0);
    Arg args[] = {
        {const_cast<String>(XmNsubMenuId), reinterpret_cast<XtArgVal>(menu_)},
        {const_cast<String>(XmNnavigationType), XmSTICKY_TAB_GROUP},
        {const_cast<String>(XmNmarginWidth), 0}, // its label is to stand where others do
    };
    set_base_widget(XmCreateOptionMenu(parent, const_cast<char*>(name), args, XtNumber(args)));
}

// The menu goes first: later it would ask the button, which is no more.
VkOptionMenu::~VkOptionMenu()
{
    if (base_widget() != nullptr)
        XtDestroyWidget(menu_);
}

Widget VkOptionMenu::add_action(const char* name, XtCallbackProc callback, XtPointer client)
{
    Widget item = XtVaCreateManagedWidget(name, xmPushButtonWidgetClass, menu_, nullptr);
    XtAddCallback(item, XmNactivateCallback, callback, client);
    if (items(menu_).size() == 1)
        set(0);
    return item;
}

void VkOptionMenu::set(int index)
{
    const auto all = items(menu_);
    if (index >= 0 && static_cast<size_t>(index) < all.size())
        XtVaSetValues(base_widget(), XmNmenuHistory, all[static_cast<size_t>(index)], nullptr);
}

int VkOptionMenu::get_index() const
{
    Widget chosen = nullptr;
    XtVaGetValues(base_widget(), XmNmenuHistory, &chosen, nullptr);
    const auto all = items(menu_);
    const auto at = std::find(all.begin(), all.end(), chosen);
    return at == all.end() ? -1 : static_cast<int>(at - all.begin());
}
