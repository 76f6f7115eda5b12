// A top-level window with one view in it.
#pragma once

#include "platform/vk/component.h"

#include <memory>

/// The base widget is the window's shell, a child of the application's. It is
/// hidden until show(). User-interface thread only.
class VkSimpleWindow : public VkComponent {
public:
    ~VkSimpleWindow() override;

    /// Puts the view, whose widgets are children of mainWindowWidget(), into the
    /// window, which takes its size. The view is not owned.
    virtual void add_view(VkComponent* view);

    /// The same, and keeps the view: it goes with the window, after its widgets.
    void add_view(std::unique_ptr<VkComponent> view);

    /// The parent for the view's widgets.
    Widget main_window_widget() const { return main_; }

    /// The widget in it that has the keyboard first; else the toolkit chooses.
    void set_first_focus(Widget widget) { first_focus_ = widget; }

    /// Shows the window: from hiding, from its icon, or from behind others.
    void show() override;
    void hide() override;
    void iconify();

    /// Whether it is on the screen or an icon there.
    bool shown() const { return shown_; }

    void set_title(const char* title); // UTF-8
    std::string title() const;

    const char* className() override { return "VkSimpleWindow"; }

protected:
    /// `defaults` are installed before the shell is made; ".title" is its title.
    /// `args` are further resources of the shell.
    explicit VkSimpleWindow(
        const char* name, VkResources defaults = {}, ArgList args = nullptr, Cardinal count = 0);

    /// The user asks the window manager to close the window. By default the
    /// window asks itself okToQuit() and, if so, deletes itself.
    virtual void handleWmDeleteMessage();

    /// Takes the window down: the shell with all that is in it, in one piece, then
    /// the view that it keeps. The destructor does so at the latest.
    void destroy_widgets();

    void widget_destroyed() override;

private:
    static void delete_message(Widget, XtPointer self, XtPointer);
    void make_shell(ArgList args, Cardinal count);
    void realize();
    void publish_title();
    void publish_process();

    std::unique_ptr<VkComponent> view_; // null if it is another's
    Widget main_ = nullptr;
    Widget first_focus_ = nullptr; // until the window is shown
    bool shown_ = false;
};
