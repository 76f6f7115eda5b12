#include "platform/vk/window.h"

#include "platform/vk/app.h"

#include <Xm/Form.h>
#include <Xm/RowColumn.h>

VkWindow::VkWindow(const char* name, VkResources defaults, ArgList args, Cardinal count) :
    VkSimpleWindow(name, defaults, args, count)
{
    char bar[] = "menuBar";
    bar_ = XmCreateMenuBar(mainWindowWidget(), bar, nullptr, 0);
    XtVaSetValues(bar_, XmNtopAttachment, XmATTACH_FORM, XmNleftAttachment, XmATTACH_FORM,
        XmNrightAttachment, XmATTACH_FORM, nullptr);
    XtManageChild(bar_);
}

void VkWindow::addView(VkComponent* view)
{
    VkSimpleWindow::addView(view);
    XtVaSetValues(
        view->baseWidget(), XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget, bar_, nullptr);
}

VkMenuPane* VkWindow::addMenuPane(const char* name)
{
    panes_.push_back(std::make_unique<VkMenuPane>(name, bar_));
    return panes_.back().get();
}

void VkWindow::handleWmDeleteMessage() { theApplication->quitYourself(); }
