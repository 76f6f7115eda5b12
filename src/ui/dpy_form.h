// What a video window shows.
#pragma once

#include "ui/dpy_form_ui.h"

/// User-interface thread only. Texts are UTF-8, perhaps with invalid bytes.
class Dpy_form : public Dpy_formUI {
public:
    Dpy_form(const char* name, Widget parent) : Dpy_formUI(name, parent) {}

    /// Puts `text` into _status_text.
    void setStatus(const char* text);

    /// Puts `first` into _fps_text and `second` into _kbps_text. Those who have
    /// a bit rate and a frame rate pass them in this order: so the bit rate
    /// stands on the left, in the field named for the frame rate.
    void setStatistics(const char* first, const char* second);

    /// Where the pictures go.
    VkPictureDisplay& picture() { return *_picture; }

    const char* className() override { return "Dpy_form"; }
};
