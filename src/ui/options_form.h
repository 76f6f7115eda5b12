// What the buttons of the options dialog do.
#pragma once

#include "ui/options_form_ui.h"

class VkSimpleWindow;

/// User-interface thread only.
class OptionsForm : public OptionsFormUI {
public:
    OptionsForm(const char* name, Widget parent) : OptionsFormUI(name, parent) {}
    const char* className() override { return "OptionsForm"; }

    /// The window around the form. OK and Cancel delete it, and it the form;
    /// without one they leave the form as it is. Not owned.
    void setParent(VkSimpleWindow* window) { _parent = window; }

protected:
    void applyOptions(Widget, XtPointer) override;
    void okOptions(Widget, XtPointer) override;
    void cancelOptions(Widget, XtPointer) override;

private:
    VkSimpleWindow* _parent = nullptr;
};
