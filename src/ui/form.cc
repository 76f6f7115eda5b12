#include "ui/form.h"

#include "platform/vk/component_class.h"
#include "platform/vk/simple_window.h"
#include "signalling/session_control.h"

#include <Xm/TextF.h>

Form::Form(const char* name, Widget parent) : Form(name) { create(parent); }

Form::Form(const char* name) : FormUI(name) {}

void Form::call(Widget, XtPointer)
{
    char* host = XmTextFieldGetString(_hostTextField);
    QD_Session_Ref()->invite("user", host); // the one who is called tells the true name
    XtFree(host);
    delete _parent; // and this form with it
}

void Form::cancel(Widget, XtPointer) { delete _parent; }

VkComponent* CreateForm(const char* name, Widget parent) { return new Form(name, parent); }

void RegisterFormInterface() { VkRegisterClass("Form", CreateForm); }
