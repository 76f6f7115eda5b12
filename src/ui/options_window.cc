#include "ui/options_window.h"

#include "platform/vk/wm_hints.h"

#include <X11/StringDefs.h>

namespace {

constexpr VkResource DEFAULTS[] = {{".title", "Options"}};

}

OptionsWindowMainWindow::OptionsWindowMainWindow(const char* name, ArgList args, Cardinal count) :
    VkSimpleWindow(name, DEFAULTS, args, count)
{
    _optionsForm = new OptionsForm("optionsForm", main_window_widget());
    XtVaSetValues(_optionsForm->base_widget(), XtNwidth, OptionsForm::WIDTH, XtNheight,
        OptionsForm::HEIGHT, nullptr);
    add_view(std::unique_ptr<VkComponent>(_optionsForm));
    _optionsForm->setParent(this);
    set_first_focus(_optionsForm->front_tab());
    VkConfigureWM(base_widget(), 1, 1, 1, 1, 1, 1, 1);
}
