#include "ui/video_options_form_ui.h"

#include "ui/options_row.h"

#include <Xm/Form.h>
#include <Xm/PushB.h>
#include <Xm/Scale.h>
#include <Xm/ToggleB.h>

namespace {

constexpr VkResource DEFAULTS[] = {
    {"*label6.labelString", "Compression:"},
    {"scale.titleString", "Frame rate"},
    {"*fpsDefaultButton.labelString", "Default"},
    {"*recOffToggle.labelString", "receive Off"},
    {"*videoPanelButton.labelString", "Video Panel"},
};

constexpr int MARGIN = 14;
constexpr int BETWEEN = 24;
constexpr int MIN_FPS = 1;
constexpr int MAX_FPS = 10;

}

VideoOptionsFormUI::VideoOptionsFormUI(const char* name, Widget parent) : VkComponent(name)
{
    set_default_resources(parent, DEFAULTS);
    _videoOptionsForm = XtVaCreateWidget(name, xmFormWidgetClass, parent, nullptr);
    set_base_widget(_videoOptionsForm);
    qd_add_options_row(_videoOptionsForm, nullptr, "label6", "videoCompressionText", &_label6,
        &_videoCompressionText);
    create_rate();
    create_toggle_and_panel();
}

void VideoOptionsFormUI::create_rate()
{
    _scale = XtVaCreateManagedWidget("scale", xmScaleWidgetClass, _videoOptionsForm,
        XmNnavigationType, XmSTICKY_TAB_GROUP, XmNorientation, XmHORIZONTAL, XmNminimum, MIN_FPS,
        XmNmaximum, MAX_FPS, XmNshowValue, XmNEAR_SLIDER, XmNscaleWidth, 178, XmNscaleHeight, 16,
        XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget, _videoCompressionText, XmNtopOffset,
        BETWEEN, XmNleftAttachment, XmATTACH_FORM, XmNleftOffset, MARGIN, nullptr);
    _fpsDefaultButton = XtVaCreateManagedWidget("fpsDefaultButton", xmPushButtonWidgetClass,
        _videoOptionsForm, XmNnavigationType, XmSTICKY_TAB_GROUP, XmNtopAttachment,
        XmATTACH_OPPOSITE_WIDGET, XmNtopWidget, _scale, XmNtopOffset, 10, XmNrightAttachment,
        XmATTACH_FORM, XmNrightOffset, MARGIN, nullptr);
    XtAddCallback(_fpsDefaultButton, XmNactivateCallback, fpsDefaultCallback, this);
}

void VideoOptionsFormUI::create_toggle_and_panel()
{
    _recOffToggle = XtVaCreateManagedWidget("recOffToggle", xmToggleButtonWidgetClass,
        _videoOptionsForm, XmNnavigationType, XmSTICKY_TAB_GROUP, XmNtopAttachment, XmATTACH_WIDGET,
        XmNtopWidget, _scale, XmNtopOffset, BETWEEN, XmNleftAttachment, XmATTACH_FORM,
        XmNleftOffset, MARGIN, nullptr);
    _videoPanelButton = XtVaCreateManagedWidget("videoPanelButton", xmPushButtonWidgetClass,
        _videoOptionsForm, XmNnavigationType, XmSTICKY_TAB_GROUP, XmNtopAttachment, XmATTACH_WIDGET,
        XmNtopWidget, _recOffToggle, XmNtopOffset, BETWEEN / 2, XmNleftAttachment, XmATTACH_FORM,
        XmNleftOffset, MARGIN, nullptr);
    XtAddCallback(_videoPanelButton, XmNactivateCallback, videoPanelCallback, this);
}
