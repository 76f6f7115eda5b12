// The General page of the options dialog.
#pragma once

#include "signalling/options.h"
#include "ui/general_options_form_ui.h"

/// Filled from the session's options when it is made; whoever keeps it holds the
/// session controller. User-interface thread only.
class GeneralOptionsForm : public GeneralOptionsFormUI {
public:
    GeneralOptionsForm(const char* name, Widget parent);
    const char* className() override { return "GeneralOptionsForm"; }

    /// From the widgets to the record.
    void setOptions();

protected:
    // The choice is read from the menu when the options are written back.
    void modem(Widget, XtPointer) override {}
    void ISDN1(Widget, XtPointer) override {}
    void ISDN2(Widget, XtPointer) override {}
    void LAN(Widget, XtPointer) override {}
    virtual void autoAccept(Widget, XtPointer) {} // the page has no control for it

private:
    _options* options_; // the session controller's, which the window holds
};
