// The Audio page of the options dialog.
#pragma once

#include "signalling/options.h"
#include "ui/audio_options_form_ui.h"

/// Filled from the session's options when it is made; whoever keeps it holds the
/// session controller. User-interface thread only.
class AudioOptionsForm : public AudioOptionsFormUI {
public:
    AudioOptionsForm(const char* name, Widget parent);
    const char* className() override { return "AudioOptionsForm"; }

    /// From the record to the widgets. A toggle is switched on here, never off.
    void set_options();

    /// From the widgets to the record.
    void get_options();

private:
    _options* options_; // the session controller's, which the window holds
};
