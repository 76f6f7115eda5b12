// A choice of one among a few, shown as a button that opens into a menu.
#pragma once

#include "platform/vk/component.h"

/// Texts come from resources by the widgets' names: the menu's name is that of
/// the whole, whose label stands before the button, an item's that of its entry.
/// User-interface thread only.
class VkOptionMenu : public VkComponent {
public:
    VkOptionMenu(const char* name, Widget parent);
    ~VkOptionMenu() override;

    /// Appends an item, which calls `callback` with `client` whenever the user
    /// chooses it. The first one is chosen from the start. Returns its widget.
    Widget add_action(const char* name, XtCallbackProc callback, XtPointer client);

    /// Chooses an item without calling back; an index that no item has changes nothing.
    void set(int index);

    /// The index of the chosen item, in the order of their making; -1 without items.
    int get_index() const;

    const char* className() override { return "VkOptionMenu"; }

private:
    Widget menu_;
};
