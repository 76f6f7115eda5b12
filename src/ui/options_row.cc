#include "ui/options_row.h"

#include "platform/vk/text.h"

#include <Xm/Form.h>
#include <Xm/Label.h>
#include <Xm/TextF.h>

namespace {

constexpr int MARGIN = 14;
constexpr int TEXT_LEFT = 35; // per cent of the page's width
constexpr int TOP = 16;
constexpr int BETWEEN = 8;

}

void qd_add_options_row(Widget page, Widget above, const char* label_name, const char* text_name,
    Widget* label, Widget* text)
{
    *text = XtVaCreateManagedWidget(text_name, xmTextFieldWidgetClass, page, XmNleftAttachment,
        XmATTACH_POSITION, XmNleftPosition, TEXT_LEFT, XmNrightAttachment, XmATTACH_FORM,
        XmNrightOffset, MARGIN, nullptr);
    if (above != nullptr)
        XtVaSetValues(*text, XmNtopAttachment, XmATTACH_WIDGET, XmNtopWidget, above, XmNtopOffset,
            BETWEEN, nullptr);
    else
        XtVaSetValues(*text, XmNtopAttachment, XmATTACH_FORM, XmNtopOffset, TOP, nullptr);
    VkMakeReadOnly(*text);
    *label = XtVaCreateManagedWidget(label_name, xmLabelWidgetClass, page, XmNleftAttachment,
        XmATTACH_FORM, XmNleftOffset, MARGIN, XmNtopAttachment, XmATTACH_OPPOSITE_WIDGET,
        XmNtopWidget, *text, XmNbottomAttachment, XmATTACH_OPPOSITE_WIDGET, XmNbottomWidget, *text,
        nullptr);
}

void qd_centre(Widget child, int percent)
{
    Dimension width = 0;
    XtVaGetValues(child, XmNwidth, &width, nullptr);
    XtVaSetValues(child, XmNleftAttachment, XmATTACH_POSITION, XmNleftPosition, percent,
        XmNleftOffset, -width / 2, nullptr);
}
