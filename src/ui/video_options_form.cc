#include "ui/video_options_form.h"

#include "platform/vk/text.h"
#include "signalling/session_control.h"

#include <Xm/Scale.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int DEFAULT_FPS = 10; // whatever the connection

}

VideoOptionsForm::VideoOptionsForm(const char* name, Widget parent) :
    VideoOptionsFormUI(name, parent),
    options_(QD_Session_Ref()->get_options())
{
    set_options();
}

void VideoOptionsForm::set_options()
{
    int slowest = 0;
    int fastest = 0;
    XtVaGetValues(_scale, XmNminimum, &slowest, XmNmaximum, &fastest, nullptr);
    XmScaleSetValue(_scale, std::clamp<int>(options_->fps_max, slowest, fastest));
    VkSetText(_videoCompressionText, options_->connection == _modem28 ? "H.263" : "H.261");
}

void VideoOptionsForm::get_options()
{
    int fps = 0;
    XmScaleGetValue(_scale, &fps);
    options_->fps_max = fps;
}

void VideoOptionsForm::fpsDefault(Widget, XtPointer) { XmScaleSetValue(_scale, DEFAULT_FPS); }

void VideoOptionsForm::videoPanel(Widget, XtPointer)
{
    if (std::system("videopanel &") != 0)
        std::fprintf(stderr, "VideoOptionsForm: cannot start videopanel\n");
}
