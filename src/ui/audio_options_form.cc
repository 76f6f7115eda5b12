#include "ui/audio_options_form.h"

#include "platform/vk/text.h"
#include "signalling/session_control.h"

#include <Xm/ToggleB.h>
#include <algorithm>

namespace {

constexpr int DIAL_MAX = 270;
constexpr int DIAL_START_ANGLE = 45;
constexpr int DIAL_ANGLE_RANGE = 270;
constexpr int LEVEL_MAX = 255;

/// What audio is sent as, by connection; others than these are not told of.
constexpr const char* CODECS[] = {"GSM-13 kbps", "ADPCM-32 kbps", "ADPCM-32 kbps", "PCM-128 kbps"};

void set_dial(VkDial& dial, int level)
{
    dial.set_range(0, DIAL_MAX);
    dial.set_angles(DIAL_START_ANGLE, DIAL_ANGLE_RANGE);
    dial.setValue(std::clamp(level, 0, LEVEL_MAX) * DIAL_MAX / LEVEL_MAX);
}

/// The dial's value in levels, if `full` were the dial's greatest.
int level_of(const VkDial& dial, int full)
{
    return static_cast<int16_t>(dial.value()) * LEVEL_MAX / full;
}

}

AudioOptionsForm::AudioOptionsForm(const char* name, Widget parent) :
    AudioOptionsFormUI(name, parent),
    options_(QD_Session_Ref()->get_options())
{
    set_options();
}

void AudioOptionsForm::set_options()
{
    VkSetText(_audioModeText, "Full Duplex");
    const auto connection = static_cast<size_t>(options_->connection);
    if (connection < std::size(CODECS))
        VkSetText(_audioCompressionText, CODECS[connection]);
    set_dial(*_volumeDial, options_->volume);
    set_dial(*_micDial, options_->mic_volume);
    if (options_->volume == 0)
        XmToggleButtonSetState(_muteToggle, True, False);
    if (options_->mic_volume == 0)
        XmToggleButtonSetState(_micOffToggle, True, False);
}

// Not slips: a microphone dial at its end stores 191, "mute" stores 0 for the
// microphone as well, and "mic off" by itself nothing. Files and members know these values.
void AudioOptionsForm::get_options()
{
    options_->volume = level_of(*_volumeDial, DIAL_MAX);
    options_->mic_volume = level_of(*_micDial, 360);
    if (XmToggleButtonGetState(_muteToggle))
        options_->volume = options_->mic_volume = 0;
}
