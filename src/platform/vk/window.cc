#include "platform/vk/window.h"

#include "platform/vk/app.h"

#include <Xm/Form.h>
#include <Xm/RowColumn.h>

VkWindow::VkWindow(const char* name, VkResources defaults, ArgList args, Cardinal count) :
    VkSimpleWindow(name, defaults, args, count)
{
    char bar[] = "menuBar";
    bar_ = XmCreateMenuBar(main_window_widget(), bar, nullptr, 0);
    XtVaSetValues(bar_, XmNtopAttachment, XmATTACH_FORM, XmNleftAttachment, XmATTACH_FORM,
        XmNrightAttachment, XmATTACH_FORM, nullptr);
    XtManageChild(bar_);
}

void VkWindow::add_view(VkComponent* view)
{
    VkSimpleWindow::add_view(view);
    XtVaSetValues(
        view->base_widget(), XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget, bar_, nullptr);
}

VkMenuPane* VkWindow::add_menu_pane(const char* name)
{
    panes_.push_back(std::make_unique<VkMenuPane>(name, bar_));
    return panes_.back().get();
}

void VkWindow::handleWmDeleteMessage() { theApplication->quit_yourself(); }
