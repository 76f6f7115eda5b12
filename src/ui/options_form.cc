#include "ui/options_form.h"

#include "platform/vk/simple_window.h"
#include "signalling/session_control.h"

void OptionsForm::applyOptions(Widget, XtPointer)
{
    _optionsDeck->setOptions();
    QD_Session_Ref()->update_options();
}

void OptionsForm::okOptions(Widget w, XtPointer call_data)
{
    applyOptions(w, call_data);
    delete _parent; // and this form with it
}

void OptionsForm::cancelOptions(Widget, XtPointer) { delete _parent; }
