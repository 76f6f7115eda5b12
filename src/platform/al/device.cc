#include "platform/al/device.h"

#include "platform/al/headless.h"
#include "platform/al/pulse.h"
#include "platform/base/choice.h"

namespace {

using Choice = QD_Choice<std::shared_ptr<QD_Al_Device>>;

constexpr Choice MICROPHONES[] = {
    {"pulse", "pulse[:SOURCE]", qd_make_pulse_mic},
    {"silence", "silence", qd_make_no_device},
    {"tone", "tone:HZ", qd_make_tone_mic},
    {"file", "file:X.wav", qd_make_file_mic},
};
constexpr Choice SPEAKERS[] = {
    {"pulse", "pulse[:SINK]", qd_make_pulse_speaker},
    {"null", "null", qd_make_no_device},
    {"file", "file:DIR", qd_make_file_speaker},
};

}

std::shared_ptr<QD_Al_Device> qd_make_al_device(QD_Al_Port::Side side, const char* text)
{
    if (side == QD_Al_Port::CAPTURE)
        return qd_choose(MICROPHONES, "QD_MIC", text);
    return qd_choose(SPEAKERS, "QD_SPEAKER", text);
}
