#include "platform/al/device.h"

#include "platform/al/headless.h"
#include "platform/al/pulse.h"

#include <cstdio>

namespace {

constexpr QD_Al_Choice MICROPHONES[] = {
    {"pulse", "pulse[:SOURCE]", qd_make_pulse_mic},
    {"silence", "silence", qd_make_no_device},
    {"tone", "tone:HZ", qd_make_tone_mic},
    {"file", "file:X.wav", qd_make_file_mic},
};
constexpr QD_Al_Choice SPEAKERS[] = {
    {"pulse", "pulse[:SINK]", qd_make_pulse_speaker},
    {"null", "null", qd_make_no_device},
    {"file", "file:DIR", qd_make_file_speaker},
};

}

std::span<const QD_Al_Choice> qd_al_choices(QD_Al_Port::Side side)
{
    if (side == QD_Al_Port::CAPTURE)
        return MICROPHONES;
    return SPEAKERS;
}

std::shared_ptr<QD_Al_Device> qd_make_al_device(QD_Al_Port::Side side, const char* text)
{
    const auto choices = qd_al_choices(side);
    const std::string value = text ? text : "";
    std::string why;
    if (!value.empty()) {
        const size_t colon = value.find(':');
        const std::string name = value.substr(0, colon);
        const std::string argument = colon == std::string::npos ? "" : value.substr(colon + 1);
        for (const QD_Al_Choice& choice : choices) {
            if (name != choice.name)
                continue;
            if (auto device = choice.make(argument, why))
                return device;
        }
        if (why.empty()) {
            why = "not one of";
            for (const QD_Al_Choice& choice : choices)
                why += std::string(" ") + choice.usage;
        }
        fprintf(stderr, "%s=%s: %s\n", side == QD_Al_Port::CAPTURE ? "QD_MIC" : "QD_SPEAKER",
            value.c_str(), why.c_str());
    }
    return choices.front().make("", why);
}
