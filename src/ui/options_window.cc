#include "ui/options_window.h"

#include "platform/vk/wm_hints.h"

#include <X11/StringDefs.h>

namespace {

constexpr VkResource DEFAULTS[] = {{".title", "Options"}};

}

OptionsWindowMainWindow::OptionsWindowMainWindow(const char* name, ArgList args, Cardinal count) :
    VkSimpleWindow(name, DEFAULTS, args, count)
{
    _optionsForm = new OptionsForm("optionsForm", mainWindowWidget());
    XtVaSetValues(_optionsForm->baseWidget(), XtNwidth, OptionsForm::WIDTH, XtNheight,
        OptionsForm::HEIGHT, nullptr);
    addView(std::unique_ptr<VkComponent>(_optionsForm));
    _optionsForm->setParent(this);
    setFirstFocus(_optionsForm->frontTab());
    VkConfigureWM(baseWidget(), 1, 1, 1, 1, 1, 1, 1);
}
