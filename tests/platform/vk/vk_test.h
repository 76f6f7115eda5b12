// The application that the toolkit's tests share, and its windows.
#pragma once

#include <gtest/gtest.h> // before all X headers: their macros would spoil it

#include "platform/vk/window.h"
#include "tests/support/x_app.h"

#include <X11/StringDefs.h>

/// The application, started as a user might, and its first window.
inline QD_Test_App& vk_app()
{
    struct First : VkWindow {
        First() : VkWindow("First. And foremost") {}
    };
    static QD_Test_App& app = QD_Test_App::get({"-geometry", "300x200+40+50", "42", "-xrm",
        "*second.geometry: 120x90+400+300", "-xrm", "*readOnlyBackground: #f0f0f0", "stays"});
    [[maybe_unused]] static First* first = new First; // goes with the application
    return app;
}

/// A window to put things into.
struct VkTestWindow : VkSimpleWindow {
    explicit VkTestWindow(const char* name = "test", VkResources defaults = {}) :
        VkSimpleWindow((static_cast<void>(vk_app()), name), defaults)
    {
    }
};

template <typename Value> Value vk_get(Widget widget, const char* resource)
{
    Value value {};
    XtVaGetValues(widget, resource, &value, nullptr);
    return value;
}
