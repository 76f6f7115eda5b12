#include "ui/options_form_ui.h"

#include <Xm/Form.h>
#include <Xm/PushB.h>

namespace {

constexpr VkResource DEFAULTS[] = {
    {"*okOptButton.labelString", "OK"},
    {"*applyOptButton.labelString", "Apply"},
    {"*cancelOptButton.labelString", "Cancel"},
};

constexpr int MARGIN = 8;

}

OptionsFormUI::OptionsFormUI(const char* name, Widget parent) : VkComponent(name)
{
    set_default_resources(parent, DEFAULTS);
    _optionsForm = XtVaCreateWidget(name, xmFormWidgetClass, parent, XmNwidth, WIDTH, XmNheight,
        HEIGHT, XmNresizePolicy, XmRESIZE_NONE, XmNfractionBase, 3, nullptr);
    set_base_widget(_optionsForm);
    create_deck();
    create_buttons();
}

void OptionsFormUI::create_deck()
{
    _optionsDeck = std::make_unique<OptionsDeckTabbedDeck>("optionsDeck", _optionsForm);
    XtVaSetValues(_optionsDeck->base_widget(), XmNtopAttachment, XmATTACH_FORM, XmNtopOffset,
        MARGIN, XmNleftAttachment, XmATTACH_FORM, XmNleftOffset, MARGIN, XmNrightAttachment,
        XmATTACH_FORM, XmNrightOffset, MARGIN, nullptr);
    _optionsDeck->show();
}

void OptionsFormUI::create_buttons()
{
    struct {
        const char* name;
        Widget* field;
        XtCallbackProc pressed;
    } const buttons[] = {
        {"okOptButton", &_okOptButton, okOptionsCallback},
        {"applyOptButton", &_applyOptButton, applyOptionsCallback},
        {"cancelOptButton", &_cancelOptButton, cancelOptionsCallback},
    };
    for (int i = 0; i < 3; ++i) {
        Widget button = XtVaCreateManagedWidget(buttons[i].name, xmPushButtonWidgetClass,
            _optionsForm, XmNnavigationType, XmSTICKY_TAB_GROUP, XmNbottomAttachment, XmATTACH_FORM,
            XmNbottomOffset, MARGIN, XmNleftAttachment, XmATTACH_POSITION, XmNleftPosition, i,
            XmNleftOffset, i > 0 ? MARGIN / 2 : MARGIN, XmNrightAttachment, XmATTACH_POSITION,
            XmNrightPosition, i + 1, XmNrightOffset, i < 2 ? MARGIN / 2 : MARGIN, nullptr);
        XtAddCallback(button, XmNactivateCallback, buttons[i].pressed, this);
        *buttons[i].field = button;
    }
    XtVaSetValues(_optionsDeck->base_widget(), XmNbottomAttachment, XmATTACH_WIDGET,
        XmNbottomWidget, _okOptButton, XmNbottomOffset, MARGIN, nullptr);
    XtVaSetValues(
        _optionsForm, XmNdefaultButton, _okOptButton, XmNcancelButton, _cancelOptButton, nullptr);
    // The frame around the default button takes room of which the form has not heard.
    for (const auto& button : buttons) {
        XtWidgetGeometry wanted {};
        XtQueryGeometry(*button.field, nullptr, &wanted);
        XtVaSetValues(*button.field, XmNheight, wanted.height, nullptr);
    }
}
