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
    addView(_optionsForm);
    _optionsForm->setParent(this);
    setFirstFocus(_optionsForm->frontTab());
    VkConfigureWM(baseWidget(), 1, 1, 1, 1, 1, 1, 1);
}

// The widgets go in one piece. The toolkit destroys at the end of the event, and
// one by one, its forms would look at neighbours that are gone by then.
OptionsWindowMainWindow::~OptionsWindowMainWindow()
{
    hide();
    if (baseWidget())
        XtDestroyWidget(baseWidget());
    delete _optionsForm;
}
