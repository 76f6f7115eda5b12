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
    auto form = std::make_unique<Form>("callForm", main_window_widget());
    form->setParent(this);
    set_first_focus(form->hostTextField());
    add_view(std::move(form));
    VkConfigureWM(base_widget(), 1, 1, 1, 1, 0, 1, 1);
}

CallWindowMainWindow::~CallWindowMainWindow() { *self_ = nullptr; }
