#include "ui/general_options_form_ui.h"

#include <Xm/Form.h>

namespace {

constexpr VkResource DEFAULTS[] = {
    {"*connectionMenu.labelString", "Connection:"},
    {"*modemButton.labelString", "Modem 28.8"},
    {"*isdn1Button.labelString", "ISDN-1"},
    {"*isdn2Button.labelString", "ISDN-2"},
    {"*lanButton.labelString", "LAN"},
};

constexpr int MARGIN = 14;

}

GeneralOptionsFormUI::GeneralOptionsFormUI(const char* name, Widget parent) : VkComponent(name)
{
    set_default_resources(parent, DEFAULTS);
    _generalOptionsForm = XtVaCreateWidget(name, xmFormWidgetClass, parent, nullptr);
    set_base_widget(_generalOptionsForm);
    _connectionMenu = std::make_unique<VkOptionMenu>("connectionMenu", _generalOptionsForm);
    // In the order of the Connection values.
    struct {
        const char* name;
        Widget* field;
        XtCallbackProc chosen;
    } const items[] = {
        {"modemButton", &_modemButton, modemCallback},
        {"isdn1Button", &_isdn1Button, ISDN1Callback},
        {"isdn2Button", &_isdn2Button, ISDN2Callback},
        {"lanButton", &_lanButton, LANCallback},
    };
    for (const auto& item : items)
        *item.field = _connectionMenu->add_action(item.name, item.chosen, this);
    XtVaSetValues(_connectionMenu->base_widget(), XmNtopAttachment, XmATTACH_FORM, XmNtopOffset,
        MARGIN, XmNleftAttachment, XmATTACH_FORM, XmNleftOffset, MARGIN, nullptr);
    _connectionMenu->show();
}
