// The three pages of the options dialog.
#pragma once

#include "platform/vk/tabbed_deck.h"
#include "ui/audio_options_form.h"
#include "ui/general_options_form.h"
#include "ui/video_options_form.h"

/// User-interface thread only.
class OptionsDeckTabbedDeck : public VkTabbedDeck {
public:
    OptionsDeckTabbedDeck(const char* name, Widget parent);

    /// Copies what all pages show to the options record.
    void setOptions();

    const char* className() override { return "OptionsDeckTabbedDeck"; }

private:
    GeneralOptionsForm general_;
    AudioOptionsForm audio_;
    VideoOptionsForm video_;
};
