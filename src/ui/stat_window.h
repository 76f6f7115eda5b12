// The statistics window: made once, shown and hidden as the user likes.
#pragma once

#include "platform/vk/simple_window.h"
#include "signalling/views.h"
#include "ui/stat_form.h"

/// User-interface thread only.
class StatWindowMainWindow : public VkSimpleWindow, public QD_Stat_Window_View {
public:
    explicit StatWindowMainWindow(const char* name, ArgList args = nullptr, Cardinal count = 0);

    StatForm* getStatForm() override { return _statForm; }
    const char* className() override { return "StatWindowMainWindow"; }
    bool okToQuit() override { return _statForm->okToQuit(); }

protected:
    /// Hides the window, which keeps its list, instead of deleting it.
    void handleWmDeleteMessage() override;

private:
    StatForm* _statForm; // the view
};
