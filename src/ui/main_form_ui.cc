#include "ui/main_form_ui.h"

#include "platform/vk/keys.h"
#include "platform/vk/text.h"
#include "ui/camera_icon.h"

#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/List.h>
#include <Xm/PushB.h>
#include <Xm/Scale.h>
#include <Xm/ScrolledW.h>
#include <Xm/TextF.h>
#include <Xm/ToggleB.h>

namespace {

constexpr VkResource DEFAULTS[] = {
    {"*label1.labelString", "Status:"},
    {"*label12.labelString", "Mic"},
    {"*label13.labelString", "Speaker"},
    {"*label2.labelString", "A/V Control"},
    {"*label3.labelString", "Switch:"},
    {"*manualToggle.labelString", "Manual"},
    {"*talkToggle.labelString", "Talk"},
    {"*toggle.labelString", "Camera"},
    {"*acceptButton.labelString", "Accept"},
    {"*rejectButton.labelString", "Reject"},
    {"*callButton.labelString", "Call"},
    {"*autoToggle.labelString", "Automatic"},
    {"label.labelString", "Speaker level"},
    // The Camera toggle looks like a button that stays down.
    {"*toggle.indicatorOn", "XmINDICATOR_NONE"},
    {"*toggle.shadowThickness", "1"},
    {"*toggle.fillOnSelect", "True"},
    {"*toggle.selectColor", "#bcd8ee"},
    {"*toggle.unselectColor", "#f3f5f7"},
    {"*toggle.background", "#f3f5f7"},
    {"*toggle.marginHeight", "0"},
    {"*toggle.marginWidth", "4"},
};

constexpr int MARGIN = 6;
constexpr int METER_WIDTH = 18;
constexpr int METER_HEIGHT = 80;
constexpr int SCALE_WIDTH = 122;

}

MainFormUI::MainFormUI(const char* name, Widget parent) : VkComponent(name)
{
    set_default_resources(parent, DEFAULTS);
    _mainForm = XtVaCreateWidget(name, xmFormWidgetClass, parent, XmNwidth, WIDTH, XmNheight,
        HEIGHT, XmNresizePolicy, XmRESIZE_NONE, nullptr);
    set_base_widget(_mainForm);
    create_status();
    create_users();
    create_controls();
    create_camera();
    create_scales();
    create_meters();
    add_callbacks();
}

void MainFormUI::create_status()
{
    _statusText = XtVaCreateManagedWidget("statusText", xmTextFieldWidgetClass, _mainForm,
        XmNtopAttachment, XmATTACH_FORM, XmNtopOffset, MARGIN, XmNrightAttachment, XmATTACH_FORM,
        XmNrightOffset, MARGIN, nullptr);
    VkMakeReadOnly(_statusText);
    _label1 = XtVaCreateManagedWidget("label1", xmLabelWidgetClass, _mainForm, XmNleftAttachment,
        XmATTACH_FORM, XmNleftOffset, MARGIN, XmNtopAttachment, XmATTACH_OPPOSITE_WIDGET,
        XmNtopWidget, _statusText, XmNbottomAttachment, XmATTACH_OPPOSITE_WIDGET, XmNbottomWidget,
        _statusText, nullptr);
    XtVaSetValues(_statusText, XmNleftAttachment, XmATTACH_WIDGET, XmNleftWidget, _label1,
        XmNleftOffset, 4, nullptr);
}

void MainFormUI::create_users()
{
    _usersFrame = XtVaCreateManagedWidget("usersFrame", xmFrameWidgetClass, _mainForm,
        XmNshadowThickness, 0, XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget, _statusText,
        XmNtopOffset, MARGIN, XmNleftAttachment, XmATTACH_FORM, XmNleftOffset, MARGIN,
        XmNrightAttachment, XmATTACH_FORM, XmNrightOffset, MARGIN, nullptr);
    _usersForm = XtVaCreateManagedWidget(
        "usersForm", xmFormWidgetClass, _usersFrame, XmNfractionBase, 3, nullptr);
    create_buttons();
    _usersScrollWindow = XtVaCreateManagedWidget("usersScrollWindow", xmScrolledWindowWidgetClass,
        _usersForm, XmNscrollingPolicy, XmAPPLICATION_DEFINED, XmNvisualPolicy, XmVARIABLE,
        XmNtopAttachment, XmATTACH_FORM, XmNleftAttachment, XmATTACH_FORM, XmNrightAttachment,
        XmATTACH_FORM, XmNbottomAttachment, XmATTACH_WIDGET, XmNbottomWidget, _acceptButton,
        XmNbottomOffset, MARGIN, nullptr);
    _usersList = XtVaCreateManagedWidget("usersList", xmListWidgetClass, _usersScrollWindow,
        XmNlistSizePolicy, XmCONSTANT, XmNselectionPolicy, XmBROWSE_SELECT, nullptr);
}

void MainFormUI::create_buttons()
{
    struct {
        const char* name;
        Widget* field;
    } const buttons[] = {
        {"acceptButton", &_acceptButton},
        {"rejectButton", &_rejectButton},
        {"callButton", &_callButton},
    };
    for (int i = 0; i < 3; ++i) {
        *buttons[i].field = XtVaCreateManagedWidget(buttons[i].name, xmPushButtonWidgetClass,
            _usersForm, XmNbottomAttachment, XmATTACH_FORM, XmNleftAttachment, XmATTACH_POSITION,
            XmNleftPosition, i, XmNleftOffset, i > 0 ? 3 : 0, XmNrightAttachment, XmATTACH_POSITION,
            XmNrightPosition, i + 1, XmNrightOffset, i < 2 ? 3 : 0, nullptr);
        VkTabButton(*buttons[i].field);
    }
}

void MainFormUI::create_controls()
{
    _ctrlFrame
        = XtVaCreateManagedWidget("ctrlFrame", xmFrameWidgetClass, _mainForm, XmNleftAttachment,
            XmATTACH_FORM, XmNleftOffset, MARGIN, XmNrightAttachment, XmATTACH_FORM, XmNrightOffset,
            MARGIN, XmNbottomAttachment, XmATTACH_FORM, XmNbottomOffset, MARGIN, nullptr);
    XtVaSetValues(_usersFrame, XmNbottomAttachment, XmATTACH_WIDGET, XmNbottomWidget, _ctrlFrame,
        XmNbottomOffset, MARGIN, nullptr);
    _label2 = XtVaCreateManagedWidget("label2", xmLabelWidgetClass, _ctrlFrame, XmNframeChildType,
        XmFRAME_TITLE_CHILD, XmNchildVerticalAlignment, XmALIGNMENT_CENTER, nullptr);
    _ctrlForm = XtVaCreateManagedWidget(
        "ctrlForm", xmFormWidgetClass, _ctrlFrame, XmNhorizontalSpacing, MARGIN, nullptr);
}

void MainFormUI::create_camera()
{
    _toggle = XtVaCreateManagedWidget("toggle", xmToggleButtonWidgetClass, _ctrlForm,
        XmNtopAttachment, XmATTACH_FORM, XmNleftAttachment, XmATTACH_FORM, nullptr);
    XtVaGetValues(
        _toggle, XmNbackground, &camera_off_ground_, XmNselectColor, &camera_on_ground_, nullptr);
    camera_off_ = VkPixmap(_toggle, CAMERA_ICON, camera_off_ground_);
    camera_on_ = VkPixmap(_toggle, CAMERA_ICON, camera_on_ground_);
    XtVaSetValues(_toggle, XmNlabelType, XmPIXMAP_AND_STRING, XmNpixmapPlacement, XmPIXMAP_LEFT,
        XmNpixmapTextPadding, 4, XmNlabelPixmap, camera_off_.get(), XmNselectPixmap,
        camera_on_.get(), nullptr);
    show_camera();

    _talkToggle = XtVaCreateManagedWidget("talkToggle", xmToggleButtonWidgetClass, _ctrlForm,
        XmNset, True, XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget, _toggle, XmNtopOffset, 2,
        XmNleftAttachment, XmATTACH_FORM, nullptr);
    _label3 = XtVaCreateManagedWidget(
        "label3", xmLabelWidgetClass, _ctrlForm, XmNleftAttachment, XmATTACH_FORM, nullptr);
    _manualToggle = XtVaCreateManagedWidget("manualToggle", xmToggleButtonWidgetClass, _ctrlForm,
        XmNset, False, XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget, _talkToggle, XmNtopOffset,
        0, XmNleftAttachment, XmATTACH_WIDGET, XmNleftWidget, _label3, nullptr);
    XtVaSetValues(_label3, XmNtopAttachment, XmATTACH_OPPOSITE_WIDGET, XmNtopWidget, _manualToggle,
        XmNbottomAttachment, XmATTACH_OPPOSITE_WIDGET, XmNbottomWidget, _manualToggle, nullptr);
    _autoToggle = XtVaCreateWidget("autoToggle", xmToggleButtonWidgetClass, _ctrlForm, nullptr);
    for (Widget toggle : {_toggle, _talkToggle, _manualToggle})
        VkTabStop(toggle);
}

// Beside a picture the toolkit does not fill a toggle that is set.
void MainFormUI::show_camera()
{
    XtVaSetValues(_toggle, XmNbackground,
        XmToggleButtonGetState(_toggle) ? camera_on_ground_ : camera_off_ground_, nullptr);
}

void MainFormUI::create_scales()
{
    _micScale = XtVaCreateManagedWidget("micScale", xmScaleWidgetClass, _ctrlForm, XmNorientation,
        XmHORIZONTAL, XmNminimum, 0, XmNmaximum, 99, XmNshowValue, XmNEAR_SLIDER, XmNscaleWidth,
        SCALE_WIDTH, XmNscaleHeight, 14, XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget,
        _manualToggle, XmNtopOffset, 0, XmNleftAttachment, XmATTACH_FORM, XmNbottomAttachment,
        XmATTACH_FORM, XmNbottomOffset, MARGIN, nullptr);
    _speakerScale = XtVaCreateWidget(
        "speakerScale", xmScaleWidgetClass, _ctrlForm, XmNorientation, XmHORIZONTAL, nullptr);
    _label = XtVaCreateWidget("label", xmLabelWidgetClass, _ctrlForm, nullptr);
}

void MainFormUI::create_meters()
{
    struct {
        const char* meter;
        const char* label;
        std::unique_ptr<VkVuMeter>* field;
        Widget* label_field;
    } const columns[] = {
        {"speakerMeter", "label13", &_speakerMeter, &_label13},
        {"micMeter", "label12", &_micMeter, &_label12},
    };
    Widget right = nullptr;
    for (const auto& column : columns) {
        Widget label = XtVaCreateManagedWidget(column.label, xmLabelWidgetClass, _ctrlForm,
            XmNbottomAttachment, XmATTACH_FORM, XmNbottomOffset, MARGIN, nullptr);
        if (right != nullptr)
            XtVaSetValues(label, XmNrightAttachment, XmATTACH_WIDGET, XmNrightWidget, right,
                XmNrightOffset, 2, nullptr);
        else
            XtVaSetValues(label, XmNrightAttachment, XmATTACH_FORM, XmNrightOffset, 2, nullptr);
        *column.label_field = right = label;

        // Centred over its label, whatever the label says.
        Dimension width = 0;
        XtVaGetValues(label, XmNwidth, &width, nullptr);
        *column.field = std::make_unique<VkVuMeter>(column.meter, _ctrlForm);
        XtVaSetValues((*column.field)->base_widget(), XmNwidth, METER_WIDTH, XmNheight,
            METER_HEIGHT, XmNtopAttachment, XmATTACH_FORM, XmNbottomAttachment, XmATTACH_WIDGET,
            XmNbottomWidget, label, XmNbottomOffset, 2, XmNleftAttachment, XmATTACH_OPPOSITE_WIDGET,
            XmNleftWidget, label, XmNleftOffset, (width - METER_WIDTH) / 2, nullptr);
        (*column.field)->show();
    }
}

void MainFormUI::add_callbacks()
{
    XtAddCallback(_acceptButton, XmNactivateCallback, acceptCallback, this);
    XtAddCallback(_rejectButton, XmNactivateCallback, rejectCallback, this);
    XtAddCallback(_callButton, XmNactivateCallback, callCallback, this);
    XtAddCallback(_toggle, XmNvalueChangedCallback, &MainFormUI::cameraCallback, this);
    XtAddCallback(_talkToggle, XmNvalueChangedCallback, talkCallback, this);
    XtAddCallback(_manualToggle, XmNvalueChangedCallback, manualSwitchCallback, this);
    XtAddCallback(_autoToggle, XmNvalueChangedCallback, autoSwitchCallback, this);
    XtAddCallback(_micScale, XmNvalueChangedCallback, micScaleCallback, this);
    XtAddCallback(_micScale, XmNdragCallback, micScaleCallback, this);
    for (const char* selected : {XmNbrowseSelectionCallback, XmNsingleSelectionCallback})
        XtAddCallback(_usersList, selected, userSelectedCallback, this);
}

void MainFormUI::cameraCallback(Widget w, XtPointer self, XtPointer call_data)
{
    auto* form = static_cast<MainFormUI*>(self);
    form->show_camera();
    form->camera(w, call_data);
}
