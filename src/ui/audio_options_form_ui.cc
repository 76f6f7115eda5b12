#include "ui/audio_options_form_ui.h"

#include "ui/options_row.h"

#include <Xm/Form.h>
#include <Xm/Label.h>
#include <Xm/ToggleB.h>

namespace {

constexpr VkResource DEFAULTS[] = {
    {"*label4.labelString", "Compression:"},
    {"*label5.labelString", "Mode:"},
    {"*label10.labelString", "Volume"},
    {"*label11.labelString", "Mic Gain"},
    {"*muteToggle.labelString", "mute"},
    {"*micOffToggle.labelString", "mic off"},
};

constexpr int DIAL_SIZE = 90;

}

AudioOptionsFormUI::AudioOptionsFormUI(const char* name, Widget parent) : VkComponent(name)
{
    set_default_resources(parent, DEFAULTS);
    _audioOptionsForm = XtVaCreateWidget(name, xmFormWidgetClass, parent, nullptr);
    set_base_widget(_audioOptionsForm);
    qd_add_options_row(_audioOptionsForm, nullptr, "label4", "audioCompressionText", &_label4,
        &_audioCompressionText);
    qd_add_options_row(_audioOptionsForm, _audioCompressionText, "label5", "audioModeText",
        &_label5, &_audioModeText);
    create_dials();
}

void AudioOptionsFormUI::create_dials()
{
    struct {
        const char* label_name;
        const char* dial_name;
        const char* toggle_name;
        Widget* label;
        std::unique_ptr<VkDial>* dial;
        Widget* toggle;
        int middle; // per cent of the page's width
    } const columns[] = {
        {"label10", "volumeDial", "muteToggle", &_label10, &_volumeDial, &_muteToggle, 26},
        {"label11", "micDial", "micOffToggle", &_label11, &_micDial, &_micOffToggle, 74},
    };
    for (const auto& column : columns) {
        Widget label = XtVaCreateManagedWidget(column.label_name, xmLabelWidgetClass,
            _audioOptionsForm, XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget, _audioModeText,
            XmNtopOffset, 24, nullptr);
        *column.dial = std::make_unique<VkDial>(column.dial_name, _audioOptionsForm);
        Widget dial = (*column.dial)->base_widget();
        XtVaSetValues(dial, XmNwidth, DIAL_SIZE, XmNheight, DIAL_SIZE, XmNtopAttachment,
            XmATTACH_WIDGET, XmNtopWidget, label, XmNtopOffset, 4, nullptr);
        (*column.dial)->show();
        Widget toggle = XtVaCreateManagedWidget(column.toggle_name, xmToggleButtonWidgetClass,
            _audioOptionsForm, XmNnavigationType, XmSTICKY_TAB_GROUP, XmNtopAttachment,
            XmATTACH_WIDGET, XmNtopWidget, dial, XmNtopOffset, 4, nullptr);
        for (Widget widget : {label, dial, toggle})
            qd_centre(widget, column.middle);
        *column.label = label;
        *column.toggle = toggle;
    }
}
