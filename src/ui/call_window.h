// The window around the call dialog.
#pragma once

#include "platform/vk/simple_window.h"
#include "ui/form.h"

/// Deletes itself when the user has called, cancelled or closed it. User-interface thread only.
class CallWindowMainWindow : public VkSimpleWindow {
public:
    /// `self` points to this window, for its owner, until the window goes.
    explicit CallWindowMainWindow(CallWindowMainWindow** self);
    ~CallWindowMainWindow() override;

    const char* className() override { return "CallWindowMainWindow"; }

private:
    CallWindowMainWindow** self_;
};
