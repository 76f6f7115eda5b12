// The options form's widgets; OptionsForm holds what they do.
#pragma once

#include "ui/options_deck.h"

#include <memory>

/// The deck of pages and the buttons OK, Apply and Cancel. A widget's name is
/// its field's without the underscore.
class OptionsFormUI : public VkComponent {
public:
    static constexpr int WIDTH = 314;
    static constexpr int HEIGHT = 380;

    const char* className() override { return "OptionsFormUI"; }

    /// The tab of the page that is in front, for those who lead the keyboard to it.
    Widget front_tab() { return _optionsDeck->tabs().selected_tab(); }

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
    static constexpr XtCallbackProc applyOptionsCallback = VkForward<&OptionsFormUI::applyOptions>;
    static constexpr XtCallbackProc okOptionsCallback = VkForward<&OptionsFormUI::okOptions>;
    static constexpr XtCallbackProc cancelOptionsCallback
        = VkForward<&OptionsFormUI::cancelOptions>;

    void create_deck();
    void create_buttons();
};
