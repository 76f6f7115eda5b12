// The application that the toolkit's tests share, and a window to put things into.
#pragma once

#include <gtest/gtest.h> // before all X headers: their macros would spoil it

#include "platform/vk/window.h"
#include "tests/support/x_app.h"

#include <X11/StringDefs.h>

struct VkTestWindow : VkSimpleWindow {
    VkTestWindow() : VkSimpleWindow((static_cast<void>(QD_Test_App::get()), "test")) {}

    /// Shows a part of that size in it.
    void hold(VkComponent& part, int width, int height)
    {
        XtVaSetValues(part.base_widget(), XtNwidth, width, XtNheight, height, nullptr);
        add_view(&part);
        show();
        qd_pump();
    }
};
