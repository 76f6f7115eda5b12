#include "ui/call_window.h"

#include "platform/vk/wm_hints.h"

namespace {

constexpr VkResource DEFAULTS[] = {{".title", "Call"}};

}

CallWindowMainWindow::CallWindowMainWindow(CallWindowMainWindow** self) :
    VkSimpleWindow("callWindow", DEFAULTS),
    self_(self),
    form_(std::make_unique<Form>("callForm", mainWindowWidget()))
{
    *self_ = this;
    form_->setParent(this);
    addView(form_.get());
    setFirstFocus(form_->hostTextField());
    VkConfigureWM(baseWidget(), 1, 1, 1, 1, 0, 1, 1);
}

CallWindowMainWindow::~CallWindowMainWindow() { *self_ = nullptr; }
