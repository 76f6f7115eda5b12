#include "platform/vk/tabbed_deck.h"

#include <Xm/Form.h>
#include <Xm/Frame.h>
#include <string>

VkTabbedDeck::VkTabbedDeck(const char* name, Widget parent) : VkComponent(name)
{
    Widget deck = XtVaCreateWidget(name, xmFormWidgetClass, parent, nullptr);
    set_base_widget(deck);
    tabs_ = std::make_unique<VkTabPanel>("tabStrip", deck, [this](int index) { pop(index); });
    XtVaSetValues(tabs_->base_widget(), XmNtopAttachment, XmATTACH_FORM, XmNleftAttachment,
        XmATTACH_FORM, nullptr);
    tabs_->show();
    Widget frame = XtVaCreateManagedWidget("pageFrame", xmFrameWidgetClass, deck, XmNtopAttachment,
        XmATTACH_WIDGET, XmNtopWidget, tabs_->base_widget(), XmNbottomAttachment, XmATTACH_FORM,
        XmNleftAttachment, XmATTACH_FORM, XmNrightAttachment, XmATTACH_FORM, nullptr);
    // Pages change with nothing about them changing its size.
    pages_parent_ = XtVaCreateManagedWidget(
        "pages", xmFormWidgetClass, frame, XmNresizePolicy, XmRESIZE_NONE, nullptr);
}

void VkTabbedDeck::register_child(VkComponent* page, const char* name)
{
    XtVaSetValues(page->base_widget(), XmNtopAttachment, XmATTACH_FORM, XmNbottomAttachment,
        XmATTACH_FORM, XmNleftAttachment, XmATTACH_FORM, XmNrightAttachment, XmATTACH_FORM,
        nullptr);
    pages_.push_back(page);
    tabs_->add_tab((std::string(name) + "Tab").c_str());
}

// What is not shown is not managed, so that the keyboard does not stray to it.
void VkTabbedDeck::pop(int index)
{
    for (size_t i = 0; i < pages_.size(); ++i)
        if (i != static_cast<size_t>(index))
            pages_[i]->hide();
    pages_[static_cast<size_t>(index)]->show();
}
