// A piece of user interface: a widget tree and the object that stands for it.
#pragma once

#include "platform/vk/resources.h"

#include <string>

/// All operations run on the user-interface thread. A component may be
/// destroyed before its widgets (it takes them along) or after them.
class VkComponent {
public:
    virtual ~VkComponent();
    VkComponent(const VkComponent&) = delete;
    VkComponent& operator=(const VkComponent&) = delete;

    /// The name given at construction, which is the base widget's name, too.
    const char* name() const { return name_.c_str(); }

    /// The top of the widget tree; null before it is built and once it is destroyed.
    Widget base_widget() const { return base_; }

    virtual void show();
    virtual void hide();

    /// Whether the application may quit as far as this component is concerned.
    virtual bool okToQuit() { return true; }

    virtual const char* className() { return "VkComponent"; }

protected:
    explicit VkComponent(const char* name) : name_(name) {}

    /// To be called once, as soon as the widget exists.
    void set_base_widget(Widget base);

    /// Installs defaults beneath the user's resources; before the widgets are
    /// built that shall have them. `any` is a widget of the display in question.
    void set_default_resources(Widget any, VkResources defaults)
    {
        VkAddDefaults(any, name(), defaults);
    }

    /// Destroys the base widget with all that is in it: at once or, while an event
    /// is being dispatched, at its end. Without effect once it is going.
    void destroy_base();

    /// The base widget is going away by other hands than ours.
    virtual void widget_destroyed() {}

private:
    static void destroyed(Widget, XtPointer self, XtPointer);

    std::string name_;
    Widget base_ = nullptr;
};

/// A callback that calls an operation of the component given as client data,
/// say VkForward<&MainFormUI::accept>, with the widget and the call data.
template <auto operation> void VkForward(Widget widget, XtPointer self, XtPointer call_data)
{
    const auto call = [&]<class Component>(void (Component::*member)(Widget, XtPointer)) {
        (static_cast<Component*>(self)->*member)(widget, call_data);
    };
    call(operation);
}
