// The call dialog's widgets; Form holds what they do.
#pragma once

#include "platform/vk/component.h"

/// A line for the host's name and two buttons. Return stands for Call, or for
/// the button that has the keyboard, and Escape for Cancel. A widget's name is
/// its field's without the underscore.
class FormUI : public VkComponent {
public:
    const char* className() override { return "FormUI"; }

    /// The line for the host's name, for those who lead the keyboard to it.
    Widget hostTextField() const { return _hostTextField; }

protected:
    explicit FormUI(const char* name) : VkComponent(name) {}

    /// Builds the widgets.
    void create(Widget parent);

    virtual void call(Widget, XtPointer) = 0;
    virtual void cancel(Widget, XtPointer) = 0;

    Widget _callButton = nullptr;
    Widget _cancelButton = nullptr;
    Widget _form = nullptr;
    Widget _hostTextField = nullptr;
    Widget _label = nullptr;

private:
    static constexpr XtCallbackProc callCallback = VkForward<&FormUI::call>;
    static constexpr XtCallbackProc cancelCallback = VkForward<&FormUI::cancel>;

    void create_host();
    void create_buttons();
};
