#include "platform/vk/tab_panel.h"

#include "platform/vk/app.h"

#include <Xm/RowColumn.h>
#include <Xm/ToggleB.h>
#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

constexpr const char* KEYS = "<Key>osfLeft: VkTabStep(-1)\n"
                             "<Key>osfUp: VkTabStep(-1)\n"
                             "<Key>osfRight: VkTabStep(1)\n"
                             "<Key>osfDown: VkTabStep(1)\n";

}

VkTabPanel::VkTabPanel(const char* name, Widget parent, Selected selected) :
    VkComponent(name),
    on_selected_(std::move(selected))
{
    set_base_widget(XtVaCreateWidget(name, xmRowColumnWidgetClass, parent, XmNorientation,
        XmHORIZONTAL, XmNpacking, XmPACK_TIGHT, XmNnavigationType, XmSTICKY_TAB_GROUP, nullptr));
}

void VkTabPanel::add_tab(const char* name)
{
    Widget tab = XtVaCreateManagedWidget(name, xmToggleButtonWidgetClass, base_widget(),
        XmNindicatorOn, XmINDICATOR_NONE, XmNfillOnSelect, True, XmNuserData, this, nullptr);
    XtOverrideTranslations(tab, keys());
    XtAddCallback(tab, XmNvalueChangedCallback, &VkTabPanel::changed, this);
    tabs_.push_back(tab);
    if (tabs_.size() == 1)
        select(0);
}

void VkTabPanel::select(int index)
{
    if (index < 0 || static_cast<size_t>(index) >= tabs_.size())
        return;
    const bool other = std::exchange(selected_, index) != index;
    for (Widget tab : tabs_)
        XmToggleButtonSetState(tab, tab == selected_tab() ? True : False, False);
    XtVaSetValues(base_widget(), XmNinitialFocus, selected_tab(), nullptr);
    if (other)
        on_selected_(index);
}

Widget VkTabPanel::selected_tab() const
{
    return selected_ < 0 ? nullptr : tabs_[static_cast<size_t>(selected_)];
}

// For all panels: what is told to the toolkit stays with it.
XtTranslations VkTabPanel::keys()
{
    static XtTranslations table = [] {
        static XtActionsRec action {const_cast<String>("VkTabStep"), &VkTabPanel::step};
        XtAppAddActions(theApplication->app_context(), &action, 1);
        return XtParseTranslationTable(KEYS);
    }();
    return table;
}

// Pressing the selected tab leaves it selected.
void VkTabPanel::changed(Widget tab, XtPointer self, XtPointer)
{
    auto* panel = static_cast<VkTabPanel*>(self);
    const auto& tabs = panel->tabs_;
    panel->select(static_cast<int>(std::find(tabs.begin(), tabs.end(), tab) - tabs.begin()));
}

void VkTabPanel::step(Widget tab, XEvent*, String* params, Cardinal* count)
{
    VkTabPanel* panel = nullptr;
    XtVaGetValues(tab, XmNuserData, &panel, nullptr);
    if (*count != 1 || (panel == nullptr))
        return;
    panel->select(panel->selected_ + std::atoi(params[0]));
    XmProcessTraversal(panel->selected_tab(), XmTRAVERSE_CURRENT);
}
