// The Audio page's widgets; AudioOptionsForm holds what they do.
#pragma once

#include "platform/vk/dial.h"

#include <memory>

/// Two texts and the dials of loudspeaker and microphone, each with its toggle.
/// A widget's name is its field's without the underscore.
class AudioOptionsFormUI : public VkComponent {
public:
    const char* className() override { return "AudioOptionsFormUI"; }

protected:
    AudioOptionsFormUI(const char* name, Widget parent);

    Widget _audioCompressionText;
    Widget _audioModeText;
    Widget _audioOptionsForm;
    Widget _label10; // of the volume dial
    Widget _label11; // of the microphone dial
    Widget _label4;  // of the compression
    Widget _label5;  // of the mode
    std::unique_ptr<VkDial> _micDial;
    Widget _micOffToggle;
    Widget _muteToggle;
    std::unique_ptr<VkDial> _volumeDial;

private:
    void create_dials();
};
