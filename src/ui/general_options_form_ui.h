// The General page's widgets; GeneralOptionsForm holds what they do.
#pragma once

#include "platform/vk/option_menu.h"

#include <memory>

/// The menu of connections. A widget's name is its field's without the underscore.
class GeneralOptionsFormUI : public VkComponent {
public:
    const char* className() override { return "GeneralOptionsFormUI"; }

protected:
    GeneralOptionsFormUI(const char* name, Widget parent);

    virtual void modem(Widget, XtPointer) = 0;
    virtual void ISDN1(Widget, XtPointer) = 0;
    virtual void ISDN2(Widget, XtPointer) = 0;
    virtual void LAN(Widget, XtPointer) = 0;

    Widget _generalOptionsForm;
    std::unique_ptr<VkOptionMenu> _connectionMenu;
    Widget _modemButton;
    Widget _isdn1Button;
    Widget _isdn2Button;
    Widget _lanButton;

private:
    static constexpr XtCallbackProc modemCallback = VkForward<&GeneralOptionsFormUI::modem>;
    static constexpr XtCallbackProc ISDN1Callback = VkForward<&GeneralOptionsFormUI::ISDN1>;
    static constexpr XtCallbackProc ISDN2Callback = VkForward<&GeneralOptionsFormUI::ISDN2>;
    static constexpr XtCallbackProc LANCallback = VkForward<&GeneralOptionsFormUI::LAN>;
};
