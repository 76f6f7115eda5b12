// The widgets of a video window; Dpy_form holds what they do.
#pragma once

#include "platform/vk/picture_display.h"

#include <memory>

/// The picture, which takes what room there is, and three texts below it. A
/// widget's name is its field's without the underscore.
class Dpy_formUI : public VkComponent {
public:
    static constexpr int WIDTH = 176;
    static constexpr int HEIGHT = 215; // at which the picture has its own size

    const char* className() override { return "Dpy_formUI"; }

protected:
    Dpy_formUI(const char* name, Widget parent);

    Widget _dpy_form;
    Widget _fps_text;    // on the left
    Widget _kbps_text;   // on the right
    Widget _status_text; // below both
    std::unique_ptr<VkPictureDisplay> _picture;

private:
    void create_texts();
    void create_picture();
};
