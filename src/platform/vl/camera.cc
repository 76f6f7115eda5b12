#include "platform/vl/camera.h"

#include "platform/base/choice.h"
#include "platform/vl/av_camera.h"
#include "platform/vl/test_card.h"

namespace {

constexpr QD_Choice<std::unique_ptr<QD_Camera>> CAMERAS[] = {
    {"v4l2", "v4l2[:DEVICE]", qd_make_v4l2_camera}, // without a device: the first that opens
    {"file", "file:CLIP", qd_make_clip_camera},
    {"screen", "screen[:DISPLAY]", qd_make_screen_camera},
    {"testcard", "testcard[:HUE]", qd_make_test_card_camera},
};

}

std::unique_ptr<QD_Camera> qd_make_camera(const char* text)
{
    return qd_choose(CAMERAS, "QD_CAMERA", text);
}
