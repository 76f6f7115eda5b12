#include "ui/stat_form.h"

#include "media/base/user_data.h"
#include "platform/vk/simple_window.h"
#include "platform/vk/text.h"
#include "signalling/session_control.h"

#include <cmath>
#include <cstdio>

namespace {

/// One figure as text, in a form of printf.
template <typename Number> void set_figure(Widget field, const char* format, Number figure)
{
    char text[64];
    std::snprintf(text, sizeof text, format, figure);
    VkSetText(field, text);
}

}

StatForm::StatForm(const char* name, Widget parent) : StatForm(name) { create(parent); }

StatForm::StatForm(const char* name) : StatFormUI(name), session_(QD_Session_Control::instance()) {}

StatForm::~StatForm() { QD_Session_Control::destroy(); }

void StatForm::create(Widget parent)
{
    StatFormUI::create(parent);
    parts_.attach(_statUsersList);
    zeroFields();
}

void StatForm::addToUsersList(const char* text) { parts_.append(text); }

void StatForm::delFromUsersList(const char* text) { parts_.remove(text); }

void StatForm::zeroFields()
{
    for (Widget field :
        {_videoLostText, _videoFpsText, _videoBdwText, _videoRecText, _audioLatencyText,
            _audioTotalText, _audioBwdText, _audioLateText, _audioLostText, _audioRecText})
        VkSetText(field, "0");
}

void StatForm::setAudioData(const UserData* figures)
{
    zeroFields(); // the video fields, too: setVideoData always follows
    if (figures == nullptr)
        return;
    set_figure(_audioRecText, "%d", figures->frames_received);
    set_figure(_audioTotalText, "%d", figures->frames_received + figures->frames_lost);
    set_figure(_audioLostText, "%d", figures->frames_lost);
    set_figure(_audioLateText, "%d", figures->frames_late);
    const double latency = std::nearbyint(figures->getLatency()) + 0.0; // never -0
    set_figure(_audioLatencyText, "%3.0f ms", latency);
    set_figure(_audioBwdText, "%4.0f kbps", figures->getKbps());
}

void StatForm::setVideoData(const UserData* figures)
{
    if (figures == nullptr)
        return;
    set_figure(_videoRecText, "%d", figures->frames_received);
    set_figure(_videoLostText, "%d", figures->frames_lost);
    set_figure(_videoBdwText, "%4.0f kbps", figures->getKbps());
    set_figure(_videoFpsText, "%2.1f fps", figures->getFps());
}

void StatForm::statUserSelected(Widget, XtPointer)
{
    const std::string* selected = parts_.selected();
    selected_user_ = selected != nullptr ? *selected : "";
    if (selected != nullptr)
        session_->update_stat(selected_user_.c_str());
}

void StatForm::statClose(Widget, XtPointer)
{
    if (_parent != nullptr)
        _parent->hide();
}
