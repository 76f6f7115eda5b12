// The Video page's widgets; VideoOptionsForm holds what they do.
#pragma once

#include "platform/vk/component.h"

/// A widget's name is its field's without the underscore.
class VideoOptionsFormUI : public VkComponent {
public:
    const char* className() override { return "VideoOptionsFormUI"; }

protected:
    VideoOptionsFormUI(const char* name, Widget parent);

    virtual void fpsDefault(Widget, XtPointer) = 0;
    virtual void videoPanel(Widget, XtPointer) = 0;

    Widget _fpsDefaultButton;
    Widget _label6; // of the compression
    Widget _recOffToggle;
    Widget _scale;
    Widget _videoCompressionText;
    Widget _videoOptionsForm;
    Widget _videoPanelButton;

private:
    static constexpr XtCallbackProc fpsDefaultCallback = VkForward<&VideoOptionsFormUI::fpsDefault>;
    static constexpr XtCallbackProc videoPanelCallback = VkForward<&VideoOptionsFormUI::videoPanel>;

    void create_rate();
    void create_toggle_and_panel();
};
