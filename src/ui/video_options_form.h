// The Video page of the options dialog.
#pragma once

#include "signalling/options.h"
#include "ui/video_options_form_ui.h"

/// Filled from the session's options when it is made; whoever keeps it holds the
/// session controller. User-interface thread only.
class VideoOptionsForm : public VideoOptionsFormUI {
public:
    VideoOptionsForm(const char* name, Widget parent);
    const char* className() override { return "VideoOptionsForm"; }

    /// From the record to the widgets; a rate beyond the scale's ends shows the nearer end.
    void set_options();

    /// From the widgets to the record.
    void get_options();

protected:
    /// Sets the scale alone; the record follows with OK or Apply.
    void fpsDefault(Widget, XtPointer) override;

    /// Starts the video panel in the background.
    void videoPanel(Widget, XtPointer) override;

private:
    _options* options_; // the session controller's, which the window holds
};
