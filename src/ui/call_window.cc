#include "ui/call_window.h"

#include "platform/vk/wm_hints.h"

namespace {

constexpr VkResource DEFAULTS[] = {{".title", "Call"}};

}

CallWindowMainWindow::CallWindowMainWindow(CallWindowMainWindow** self) :
    VkSimpleWindow("callWindow", DEFAULTS),
    self_(self)
{
    *self_ = this;
    auto form = std::make_unique<Form>("callForm", mainWindowWidget());
    form->setParent(this);
    setFirstFocus(form->hostTextField());
    addView(std::move(form));
    VkConfigureWM(baseWidget(), 1, 1, 1, 1, 0, 1, 1);
}

CallWindowMainWindow::~CallWindowMainWindow() { *self_ = nullptr; }
