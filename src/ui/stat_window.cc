#include "ui/stat_window.h"

#include "platform/vk/wm_hints.h"

#include <X11/StringDefs.h>
#include <cstdio>

namespace {

constexpr VkResource DEFAULTS[] = {{".title", "Statistics"}};

}

StatWindowMainWindow::StatWindowMainWindow(const char* name, ArgList args, Cardinal count) :
    VkSimpleWindow(name, DEFAULTS, args, count)
{
    _statForm = new StatForm("statForm", main_window_widget());
    XtVaSetValues(
        _statForm->base_widget(), XtNwidth, StatForm::WIDTH, XtNheight, StatForm::HEIGHT, nullptr);
    add_view(std::unique_ptr<VkComponent>(_statForm));
    _statForm->setParent(this);
    set_first_focus(_statForm->usersList());
    VkConfigureWM(base_widget(), 1, 1, 1, 1, 1, 1, 1);
}

void StatWindowMainWindow::handleWmDeleteMessage()
{
    std::printf("Hidding stat window\n");
    std::fflush(stdout);
    hide();
}
