// The options form's widgets; OptionsForm holds what they do.
#pragma once

#include "ui/options_deck.h"

#include <memory>

/// The deck of pages and the buttons OK, Apply and Cancel. A widget's name is
/// its field's without the underscore.
class OptionsFormUI : public VkComponent {
public:
    const char* className() override { return "OptionsFormUI"; }

    /// The tab of the page that is in front, for those who lead the keyboard to it.
    Widget frontTab() { return _optionsDeck->tabs().selectedTab(); }

protected:
    OptionsFormUI(const char* name, Widget parent);

    virtual void applyOptions(Widget, XtPointer) = 0;
    virtual void okOptions(Widget, XtPointer) = 0;
    virtual void cancelOptions(Widget, XtPointer) = 0;

    std::unique_ptr<OptionsDeckTabbedDeck> _optionsDeck;
    Widget _applyOptButton;
    Widget _cancelOptButton;
    Widget _okOptButton;
    Widget _optionsForm;

private:
    static void applyOptionsCallback(Widget, XtPointer, XtPointer);
    static void okOptionsCallback(Widget, XtPointer, XtPointer);
    static void cancelOptionsCallback(Widget, XtPointer, XtPointer);

    void createDeck();
    void createButtons();
};
