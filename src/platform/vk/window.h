// A top-level window with a menu bar: the application's main window.
#pragma once

#include "platform/vk/menu_pane.h"
#include "platform/vk/simple_window.h"

#include <memory>
#include <vector>

/// User-interface thread only.
class VkWindow : public VkSimpleWindow {
public:
    using VkSimpleWindow::add_view;
    void add_view(VkComponent* view) override;

    /// Appends a pane to the menu bar. The window owns it.
    VkMenuPane* add_menu_pane(const char* name);

    const char* className() override { return "VkWindow"; }

protected:
    explicit VkWindow(
        const char* name, VkResources defaults = {}, ArgList args = nullptr, Cardinal count = 0);

    /// Closing the main window means quitting the application.
    void handleWmDeleteMessage() override;

private:
    Widget bar_;
    std::vector<std::unique_ptr<VkMenuPane>> panes_;
};
