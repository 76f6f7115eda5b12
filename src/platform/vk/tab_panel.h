// A strip of tabs, of which one is selected.
#pragma once

#include "platform/vk/component.h"

#include <functional>
#include <vector>

/// Works by the mouse and by the arrow keys, which select the tab they lead to.
/// A tab's text is the label of the widget of its name. User-interface thread only.
class VkTabPanel : public VkComponent {
public:
    /// Called with the index of a tab that becomes the selected one.
    using Selected = std::function<void(int)>;

    VkTabPanel(const char* name, Widget parent, Selected selected);

    /// Appends a tab; the first is selected at once.
    void add_tab(const char* name);

    /// Selects a tab by its index from 0; one that there is not changes nothing.
    void select(int index);

    /// The selected tab's index, -1 without tabs.
    int selected() const { return selected_; }

    /// The selected tab's widget, null without tabs.
    Widget selected_tab() const;

    const char* className() override { return "VkTabPanel"; }

private:
    static XtTranslations keys();
    static void changed(Widget, XtPointer self, XtPointer);
    static void step(Widget, XEvent*, String* params, Cardinal* count);

    std::vector<Widget> tabs_;
    Selected on_selected_;
    int selected_ = -1;
};
