// One member's video window.
#pragma once

#include "platform/vk/app.h"
#include "platform/vk/simple_window.h"
#include "signalling/views.h"
#include "ui/dpy_form.h"

/// Opened and closed by the member. User-interface thread only.
class DisplayWindowMainWindow : public VkSimpleWindow, public QD_Display_View {
public:
    /// `name` is the member's display string, which the title bar and the line
    /// below the picture show. Without one (""), the window is "displayWindow"
    /// and its title the resource "title", by default "Video Display".
    explicit DisplayWindowMainWindow(const char* name, ArgList args = nullptr, Cardinal count = 0);

    void setStatus(const char* text) { _dpy_form->setStatus(text); }
    /// Passed over while the display takes nothing: the next ones follow soon.
    void setStatistics(const char* first, const char* second) override
    {
        if (theApplication->takes_more())
            _dpy_form->setStatistics(first, second);
    }

    void show() override { VkSimpleWindow::show(); }
    void init_surface() override { _dpy_form->picture().init_display2(); }
    void draw(const unsigned char* picture) override
    {
        _dpy_form->picture().displayYUV411(picture);
    }

    bool okToQuit() override { return _dpy_form->okToQuit(); }
    const char* className() override { return "DisplayWindowMainWindow"; }

protected:
    /// Makes it an icon: the member keeps it, and the user can have it back.
    void handleWmDeleteMessage() override;

private:
    Dpy_form* _dpy_form; // the view
};
