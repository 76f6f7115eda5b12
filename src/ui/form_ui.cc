#include "ui/form_ui.h"

#include <Xm/Form.h>
#include <Xm/Label.h>
#include <Xm/PushB.h>
#include <Xm/TextF.h>

namespace {

constexpr VkResource DEFAULTS[] = {
    {"label.labelString", "User host name:"}, // "label" is many a form's
    {"*callButton.labelString", "Call"},
    {"*cancelButton.labelString", "Cancel"},
};

constexpr int WIDTH = 320;
constexpr int HEIGHT = 88;
constexpr int MARGIN = 10;
constexpr int BUTTON_WIDTH = 88;
constexpr int DEFAULT_BORDER = 1; // around the button that Return stands for
constexpr int BUTTON_RIM = 5;     // what the toolkit leaves for that around each button

constexpr const char* BUTTON_KEYS = "<Key>Return: ArmAndActivate()\n"
                                    "<Key>osfActivate: ArmAndActivate()";

}

void FormUI::create(Widget parent)
{
    set_default_resources(parent, DEFAULTS);
    _form = XtVaCreateWidget(name(), xmFormWidgetClass, parent, XmNwidth, WIDTH, XmNheight, HEIGHT,
        XmNresizePolicy, XmRESIZE_NONE, nullptr);
    set_base_widget(_form);
    create_host();
    create_buttons();
}

void FormUI::create_host()
{
    _label = XtVaCreateManagedWidget("label", xmLabelWidgetClass, _form, XmNleftAttachment,
        XmATTACH_FORM, XmNleftOffset, MARGIN, XmNtopAttachment, XmATTACH_FORM, XmNtopOffset, MARGIN,
        nullptr);
    _hostTextField = XtVaCreateManagedWidget("hostTextField", xmTextFieldWidgetClass, _form,
        XmNtopAttachment, XmATTACH_FORM, XmNtopOffset, MARGIN, XmNleftAttachment, XmATTACH_WIDGET,
        XmNleftWidget, _label, XmNleftOffset, 4, XmNrightAttachment, XmATTACH_FORM, XmNrightOffset,
        MARGIN, nullptr);
    XtVaSetValues(_label, XmNbottomAttachment, XmATTACH_OPPOSITE_WIDGET, XmNbottomWidget,
        _hostTextField, nullptr);
}

void FormUI::create_buttons()
{
    // Not the form's own XmNdefaultButton: it keeps a pointer to the button that
    // has the keyboard, even to one that is destroyed.
    const XtTranslations keys = XtParseTranslationTable(BUTTON_KEYS);
    // In the order in which the keyboard visits them; Cancel is the one in the corner.
    struct {
        const char* name;
        Widget* field;
        XtCallbackProc callback;
    } const buttons[] = {
        {"callButton", &_callButton, callCallback},
        {"cancelButton", &_cancelButton, cancelCallback},
    };
    int right = 2 * MARGIN + BUTTON_WIDTH;
    for (const auto& button : buttons) {
        *button.field
            = XtVaCreateManagedWidget(button.name, xmPushButtonWidgetClass, _form, XmNrecomputeSize,
                False, XmNwidth, BUTTON_WIDTH, XmNbottomAttachment, XmATTACH_FORM, XmNbottomOffset,
                MARGIN, XmNrightAttachment, XmATTACH_FORM, XmNrightOffset, right, XmNnavigationType,
                XmTAB_GROUP, XmNdefaultButtonShadowThickness, DEFAULT_BORDER, nullptr);
        XtOverrideTranslations(*button.field, keys);
        XtAddCallback(*button.field, XmNactivateCallback, button.callback, this);
        right = MARGIN;
    }
    XtVaSetValues(_form, XmNcancelButton, _cancelButton, nullptr);
    XtVaSetValues(_callButton, XmNshowAsDefault, DEFAULT_BORDER, nullptr);
    XtAddCallback(_hostTextField, XmNactivateCallback, callCallback, this);
}
