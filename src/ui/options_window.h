// The window of the options dialog: made anew each time it is opened.
#pragma once

#include "platform/vk/simple_window.h"
#include "signalling/session_control.h"
#include "ui/options_form.h"

/// OK, Cancel and the window manager delete it. User-interface thread only.
class OptionsWindowMainWindow : public VkSimpleWindow {
public:
    explicit OptionsWindowMainWindow(const char* name, ArgList args = nullptr, Cardinal count = 0);

    bool okToQuit() override { return _optionsForm->okToQuit(); }
    const char* className() override { return "OptionsWindowMainWindow"; }

private:
    const QD_Session_Ref session_; // keeps the options that the pages write to
    OptionsForm* _optionsForm;     // the view
};
