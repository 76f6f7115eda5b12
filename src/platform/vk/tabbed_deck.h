// Pages one behind the other, with a tab for each.
#pragma once

#include "platform/vk/tab_panel.h"

#include <memory>
#include <vector>

/// User-interface thread only.
class VkTabbedDeck : public VkComponent {
public:
    VkTabbedDeck(const char* name, Widget parent);

    /// The parent for the pages' widgets.
    Widget page_parent() const { return pages_parent_; }

    /// Appends a page, whose tab is the widget `name` + "Tab". The page fills
    /// the deck and is not owned; it must not go before the deck's last use.
    void register_child(VkComponent* page, const char* name);

    /// The tabs; selecting one brings its page to the front.
    VkTabPanel& tabs() { return *tabs_; }

    const char* className() override { return "VkTabbedDeck"; }

private:
    void pop(int index);

    std::unique_ptr<VkTabPanel> tabs_;
    Widget pages_parent_;
    std::vector<VkComponent*> pages_;
};
