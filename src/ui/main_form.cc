#include "ui/main_form.h"

#include "platform/vk/app.h"
#include "platform/vk/notice.h"
#include "platform/vk/text.h"
#include "signalling/options.h"
#include "signalling/session_control.h"
#include "ui/options_window.h"

#include <Xm/Scale.h>
#include <Xm/ToggleB.h>
#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace {

constexpr int METER_MAX = 110;
constexpr int LEVEL_MAX = 32768;

int32_t meter_value(int level)
{
    return static_cast<int32_t>(METER_MAX - int64_t {METER_MAX} * level / LEVEL_MAX);
}

bool show_statistics(Widget form)
{
    static XtResource resource
        = VkEntry("showStatistics", "ShowStatistics", XmRBoolean, sizeof(Boolean), 0, "False");
    Boolean show = False;
    XtGetApplicationResources(form, &show, &resource, 1, nullptr, 0);
    return show != 0;
}

}

MainForm::MainForm(const char* name, Widget parent) : MainFormUI(name, parent)
{
    users_.attach(_usersList);
    _statistics = new StatWindowMainWindow("statWindow");
    const QD_Session_Ref session;
    _options = session->get_options();
    XmScaleSetValue(_micScale, std::clamp<int>(_options->mic_cutoff, 0, 99));
    if (show_statistics(_mainForm))
        _statistics->show();
    start_camera_ = (XmToggleButtonGetState(_toggle) != 0);
}

MainForm::~MainForm()
{
    delete _statistics;
    for (VkSimpleWindow* window : std::vector(theApplication->windows()))
        if (dynamic_cast<OptionsWindowMainWindow*>(window) != nullptr)
            delete window;
}

void MainForm::setStatus(const char* text) { VkSetText(_statusText, text); }

void MainForm::addUserToList(const char* text) { users_.append(text); }

void MainForm::delUserFromList(const char* text) { users_.remove(text); }

void MainForm::activateButtons(char /*on*/) {}

void MainForm::chatMessage(QD_Member*, int /*kind*/, const char* /*text*/, int /*len*/) {}

void MainForm::setSpeakerLevel(int level)
{
    speaker_value_ = meter_value(level);
    speaker_known_ = true;
}

void MainForm::setMicLevel(int level)
{
    mic_value_ = meter_value(level);
    mic_known_ = true;
}

void MainForm::apply_start_state(bool local_known)
{
    if (start_camera_ && local_known)
        camera(nullptr, nullptr);
}

void MainForm::updateLevels()
{
    if (speaker_known_)
        _speakerMeter->setValue(speaker_value_, METER_MAX);
    if (mic_known_)
        _micMeter->setValue(mic_value_, METER_MAX);
}

void MainForm::accept(Widget, XtPointer) { QD_Session_Ref()->accept_invitation(); }

void MainForm::reject(Widget, XtPointer)
{
    QD_Session_Ref()->reject_invitation();
    XtSetSensitive(_acceptButton, False);
    XtSetSensitive(_rejectButton, False);
}

// Calls are placed from the call dialog.
void MainForm::call(Widget, XtPointer) {}

void MainForm::camera(Widget, XtPointer)
{
    start_camera_ = false; // from here on it is the user's
    if (_parent == nullptr)
        return;
    if (XmToggleButtonGetState(_toggle))
        _parent->playVideo();
    else
        _parent->stopVideo();
}

void MainForm::talk(Widget, XtPointer)
{
    if ((_parent == nullptr) || !XmToggleButtonGetState(_manualToggle))
        return;
    if (XmToggleButtonGetState(_talkToggle))
        _parent->playAudio();
    else
        _parent->stopAudio();
}

void MainForm::manualSwitch(Widget, XtPointer)
{
    if ((_parent != nullptr) && !XmToggleButtonGetState(_manualToggle))
        _parent->playAudio();
}

void MainForm::autoSwitch(Widget, XtPointer)
{
    VkUnimplemented(base_widget(), "MainForm::autoSwitch");
}

void MainForm::micScale(Widget, XtPointer)
{
    int level = 0;
    XmScaleGetValue(_micScale, &level);
    if (_parent != nullptr)
        _parent->setMicCutoffLevel(level);
}

void MainForm::userSelected(Widget, XtPointer) {}

void MainForm::options(Widget, XtPointer)
{
    (new OptionsWindowMainWindow("optionsWindow"))->show(); // its buttons delete it
}

void MainForm::statistics(Widget, XtPointer) { _statistics->show(); }

void MainForm::reset(Widget, XtPointer)
{
    users_.clear();
    setStatus("Session reset completed");
}

void MainForm::audioPanel(Widget, XtPointer)
{
    if (std::system("apanel &") != 0)
        std::fprintf(stderr, "MainForm: cannot start apanel\n");
}

void MainForm::chat(Widget, XtPointer) {}

void MainForm::conf(Widget, XtPointer) { VkUnimplemented(base_widget(), "MainForm::conf"); }

void MainForm::overview(Widget, XtPointer) { VkUnimplemented(base_widget(), "MainForm::overview"); }

void MainForm::users(Widget, XtPointer) { VkUnimplemented(base_widget(), "MainForm::users"); }
