// The call dialog: whom to invite into the conference.
#pragma once

#include "ui/form_ui.h"

class VkSimpleWindow;

/// User-interface thread only.
class Form : public FormUI {
public:
    Form(const char* name, Widget parent);

    /// Without widgets: create() builds them, before any other operation.
    explicit Form(const char* name);

    using FormUI::create;

    const char* className() override { return "Form"; }

    /// The window around the form, which both buttons delete, and the form with
    /// it. Without one the form stays, and Cancel does nothing.
    void setParent(VkSimpleWindow* window) { _parent = window; }

protected:
    /// Invites the host that the user typed; what becomes of it is not told here.
    void call(Widget, XtPointer) override;
    void cancel(Widget, XtPointer) override;

private:
    VkSimpleWindow* _parent = nullptr;
};

extern "C" {

/// Makes a Form, hidden; the caller owns it.
VkComponent* CreateForm(const char* name, Widget parent);

/// Makes the class known as "Form", so that VkMakeByClass() makes one.
void RegisterFormInterface();
}
