#include "ui/stat_form_ui.h"

#include "platform/vk/keys.h"
#include "platform/vk/text.h"

#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <Xm/Label.h>
#include <Xm/List.h>
#include <Xm/PushB.h>
#include <Xm/ScrolledW.h>
#include <Xm/TextF.h>

namespace {

constexpr VkResource DEFAULTS[] = {
    {"*label14.labelString", "Received:"},
    {"*label15.labelString", "Audio:"},
    {"*label16.labelString", "Participants:"},
    {"*label17.labelString", "Video:"},
    {"*label18.labelString", "Received:"},
    {"*label19.labelString", "Lost:"},
    {"*label20.labelString", "Late:"},
    {"*label21.labelString", "Bandwidth:"},
    {"*label22.labelString", "Total:"},
    {"*label23.labelString", "Latency:"},
    {"*label24.labelString", "Bandwidth:"},
    {"*label25.labelString", "Frames/sec:"},
    {"*label26.labelString", "Lost:"},
    {"*statCloseButton.labelString", "Close"},
};

constexpr int MARGIN = 10;
constexpr int LIST_PERCENT = 37; // of the form's width
constexpr int ROW_HEIGHT = 28;

struct Figure {
    const char* label_name;
    const char* text_name;
    Widget* label;
    Widget* text;
};

/// Lays figures out in two columns, row by row, and ends with a margin.
void add_figures(Widget form, std::span<const Figure> figures)
{
    // Where a column's labels end and its fields begin and end, in per cent.
    constexpr struct {
        int label_right;
        int text_left;
        int text_right;
    } COLUMNS[] = {{22, 23, 48}, {72, 73, 98}};

    for (size_t i = 0; i < figures.size(); ++i) {
        const auto& column = COLUMNS[i % 2];
        const int top = 4 + static_cast<int>(i / 2) * ROW_HEIGHT;
        const bool last = i + 2 >= figures.size();
        *figures[i].text = XtVaCreateManagedWidget(figures[i].text_name, xmTextFieldWidgetClass,
            form, XmNcolumns, 8, XmNtopAttachment, XmATTACH_FORM, XmNtopOffset, top,
            XmNleftAttachment, XmATTACH_POSITION, XmNleftPosition, column.text_left,
            XmNrightAttachment, XmATTACH_POSITION, XmNrightPosition, column.text_right,
            XmNbottomAttachment, last ? XmATTACH_FORM : XmATTACH_NONE, XmNbottomOffset, 6, nullptr);
        VkMakeReadOnly(*figures[i].text);
        *figures[i].label = XtVaCreateManagedWidget(figures[i].label_name, xmLabelWidgetClass, form,
            XmNalignment, XmALIGNMENT_END, XmNrightAttachment, XmATTACH_POSITION, XmNrightPosition,
            column.label_right, XmNtopAttachment, XmATTACH_OPPOSITE_WIDGET, XmNtopWidget,
            *figures[i].text, XmNbottomAttachment, XmATTACH_OPPOSITE_WIDGET, XmNbottomWidget,
            *figures[i].text, nullptr);
    }
}

/// A titled frame right of the list with a form in it.
void add_group(Widget parent, const char* frame_name, const char* form_name, const char* title_name,
    Widget* frame, Widget* form, Widget* title)
{
    *frame = XtVaCreateManagedWidget(frame_name, xmFrameWidgetClass, parent, XmNleftAttachment,
        XmATTACH_POSITION, XmNleftPosition, LIST_PERCENT, XmNleftOffset, MARGIN, XmNrightAttachment,
        XmATTACH_FORM, XmNrightOffset, MARGIN, XmNtopAttachment, XmATTACH_FORM, XmNtopOffset,
        MARGIN - 2, nullptr);
    *title = XtVaCreateManagedWidget(title_name, xmLabelWidgetClass, *frame, XmNframeChildType,
        XmFRAME_TITLE_CHILD, XmNchildVerticalAlignment, XmALIGNMENT_CENTER, nullptr);
    *form = XtVaCreateManagedWidget(form_name, xmFormWidgetClass, *frame, nullptr);
}

}

void StatFormUI::create(Widget parent)
{
    set_default_resources(parent, DEFAULTS);
    _statForm = XtVaCreateWidget(name(), xmFormWidgetClass, parent, XmNwidth, WIDTH, XmNheight,
        HEIGHT, XmNresizePolicy, XmRESIZE_NONE, nullptr);
    set_base_widget(_statForm);
    create_participants();
    create_audio();
    create_video();
    create_close();
}

void StatFormUI::create_participants()
{
    _frame = XtVaCreateManagedWidget("frame", xmFrameWidgetClass, _statForm, XmNshadowThickness, 0,
        XmNtopAttachment, XmATTACH_FORM, XmNtopOffset, MARGIN - 2, XmNbottomAttachment,
        XmATTACH_FORM, XmNbottomOffset, MARGIN, XmNleftAttachment, XmATTACH_FORM, XmNleftOffset,
        MARGIN, XmNrightAttachment, XmATTACH_POSITION, XmNrightPosition, LIST_PERCENT, nullptr);
    _statPartsForm = XtVaCreateManagedWidget("statPartsForm", xmFormWidgetClass, _frame, nullptr);
    _label16 = XtVaCreateManagedWidget("label16", xmLabelWidgetClass, _statPartsForm,
        XmNtopAttachment, XmATTACH_FORM, XmNleftAttachment, XmATTACH_FORM, nullptr);
    _statUsersScroll = XtVaCreateManagedWidget("statUsersScroll", xmScrolledWindowWidgetClass,
        _statPartsForm, XmNscrollingPolicy, XmAPPLICATION_DEFINED, XmNvisualPolicy, XmVARIABLE,
        XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget, _label16, XmNtopOffset, 4,
        XmNbottomAttachment, XmATTACH_FORM, XmNleftAttachment, XmATTACH_FORM, XmNrightAttachment,
        XmATTACH_FORM, nullptr);
    _statUsersList = XtVaCreateManagedWidget("statUsersList", xmListWidgetClass, _statUsersScroll,
        XmNlistSizePolicy, XmCONSTANT, XmNselectionPolicy, XmBROWSE_SELECT, nullptr);
    for (const char* selected : {XmNbrowseSelectionCallback, XmNsingleSelectionCallback})
        XtAddCallback(_statUsersList, selected, statUserSelectedCallback, this);
}

void StatFormUI::create_audio()
{
    add_group(_statForm, "statAudioFrame", "statAudioForm", "label15", &_statAudioFrame,
        &_statAudioForm, &_label15);
    const Figure figures[] = {
        {"label14", "audioRecText", &_label14, &_audioRecText},
        {"label19", "audioLostText", &_label19, &_audioLostText},
        {"label20", "audioLateText", &_label20, &_audioLateText},
        {"label22", "audioTotalText", &_label22, &_audioTotalText},
        {"label21", "audioBwdText", &_label21, &_audioBwdText},
        {"label23", "audioLatencyText", &_label23, &_audioLatencyText},
    };
    add_figures(_statAudioForm, figures);
}

void StatFormUI::create_video()
{
    add_group(_statForm, "statVideoFrame", "statVideoForm", "label17", &_statVideoFrame,
        &_statVideoForm, &_label17);
    XtVaSetValues(
        _statVideoFrame, XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget, _statAudioFrame, nullptr);
    const Figure figures[] = {
        {"label18", "videoRecText", &_label18, &_videoRecText},
        {"label26", "videoLostText", &_label26, &_videoLostText},
        {"label24", "videoBdwText", &_label24, &_videoBdwText},
        {"label25", "videoFpsText", &_label25, &_videoFpsText},
    };
    add_figures(_statVideoForm, figures);
}

void StatFormUI::create_close()
{
    _statCloseButton = XtVaCreateManagedWidget("statCloseButton", xmPushButtonWidgetClass,
        _statForm, XmNwidth, 90, XmNrightAttachment, XmATTACH_FORM, XmNrightOffset, MARGIN,
        XmNbottomAttachment, XmATTACH_FORM, XmNbottomOffset, MARGIN, nullptr);
    VkTabButton(_statCloseButton);
    XtAddCallback(_statCloseButton, XmNactivateCallback, statCloseCallback, this);
    // Escape closes, as in any dialog.
    XtVaSetValues(_statForm, XmNcancelButton, _statCloseButton, nullptr);
}
