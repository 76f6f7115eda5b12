#include "platform/vl/camera.h"

#include "platform/vl/av_camera.h"
#include "platform/vl/test_card.h"

#include <cstdio>

namespace {

constexpr QD_Camera_Choice CAMERAS[] = {
    {"v4l2", "v4l2[:DEVICE]", qd_make_v4l2_camera}, // without a device: the first that opens
    {"file", "file:CLIP", qd_make_clip_camera},
    {"screen", "screen[:DISPLAY]", qd_make_screen_camera},
    {"testcard", "testcard[:HUE]", qd_make_test_card_camera},
};

}

std::span<const QD_Camera_Choice> qd_camera_choices() { return CAMERAS; }

std::unique_ptr<QD_Camera> qd_make_camera(const char* text)
{
    const std::string value = text != nullptr ? text : "";
    std::string why;
    if (!value.empty()) {
        const size_t colon = value.find(':');
        const std::string name = value.substr(0, colon);
        const std::string argument = colon == std::string::npos ? "" : value.substr(colon + 1);
        for (const QD_Camera_Choice& choice : CAMERAS) {
            if (name != choice.name)
                continue;
            if (auto camera = choice.make(argument, why))
                return camera;
        }
        if (why.empty()) {
            why = "not one of";
            for (const QD_Camera_Choice& choice : CAMERAS)
                why += std::string(" ") + choice.usage;
        }
        fprintf(stderr, "QD_CAMERA=%s: %s\n", value.c_str(), why.c_str());
    }
    return CAMERAS[0].make("", why);
}
