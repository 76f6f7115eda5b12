#include "ui/dpy_form_ui.h"

#include "platform/vk/text.h"

#include <Xm/Form.h>
#include <Xm/TextF.h>

namespace {

// Two rows of texts with gaps around them take what the picture leaves of the height.
constexpr int ROW_HEIGHT = 25;
constexpr int GAP = (Dpy_formUI::HEIGHT - VkPictureDisplay::HEIGHT - 2 * ROW_HEIGHT) / 3;
constexpr int SIDE = 5;
constexpr int MIDDLE = 55; // per cent of the width

static_assert(VkPictureDisplay::HEIGHT + 2 * ROW_HEIGHT + 3 * GAP == Dpy_formUI::HEIGHT);

}

Dpy_formUI::Dpy_formUI(const char* name, Widget parent) : VkComponent(name)
{
    _dpy_form = XtVaCreateWidget(name, xmFormWidgetClass, parent, XmNwidth, WIDTH, XmNheight,
        HEIGHT, XmNresizePolicy, XmRESIZE_NONE, nullptr);
    set_base_widget(_dpy_form);
    create_texts();
    create_picture();
}

void Dpy_formUI::create_texts()
{
    _status_text = XtVaCreateManagedWidget("status_text", xmTextFieldWidgetClass, _dpy_form,
        XmNheight, ROW_HEIGHT, XmNbottomAttachment, XmATTACH_FORM, XmNbottomOffset, GAP,
        XmNleftAttachment, XmATTACH_FORM, XmNleftOffset, SIDE, XmNrightAttachment, XmATTACH_FORM,
        XmNrightOffset, SIDE, nullptr);
    _fps_text = XtVaCreateManagedWidget("fps_text", xmTextFieldWidgetClass, _dpy_form, XmNheight,
        ROW_HEIGHT, XmNbottomAttachment, XmATTACH_WIDGET, XmNbottomWidget, _status_text,
        XmNbottomOffset, GAP, XmNleftAttachment, XmATTACH_FORM, XmNleftOffset, SIDE,
        XmNrightAttachment, XmATTACH_POSITION, XmNrightPosition, MIDDLE, XmNrightOffset, 2,
        nullptr);
    _kbps_text = XtVaCreateManagedWidget("kbps_text", xmTextFieldWidgetClass, _dpy_form, XmNheight,
        ROW_HEIGHT, XmNbottomAttachment, XmATTACH_WIDGET, XmNbottomWidget, _status_text,
        XmNbottomOffset, GAP, XmNleftAttachment, XmATTACH_POSITION, XmNleftPosition, MIDDLE,
        XmNleftOffset, 2, XmNrightAttachment, XmATTACH_FORM, XmNrightOffset, SIDE, nullptr);
    for (Widget text : {_status_text, _fps_text, _kbps_text})
        VkMakeReadOnly(text);
}

void Dpy_formUI::create_picture()
{
    _picture = std::make_unique<VkPictureDisplay>("picture", _dpy_form);
    XtVaSetValues(_picture->base_widget(), XmNtopAttachment, XmATTACH_FORM, XmNleftAttachment,
        XmATTACH_FORM, XmNrightAttachment, XmATTACH_FORM, XmNbottomAttachment, XmATTACH_WIDGET,
        XmNbottomWidget, _fps_text, XmNbottomOffset, GAP, nullptr);
    _picture->show();
}
