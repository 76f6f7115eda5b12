// The application that the forms' tests share.
#pragma once

#include <gmock/gmock.h> // before all X headers: their macros would spoil it

#include "signalling/views.h"
#include "tests/support/x_app.h"
#include "ui/main_form.h"

inline QD_Test_App& ui_app()
{
    return QD_Test_App::get({"-xrm", "*statWindow.geometry: +300+7", "-xrm", "*toggle.set: True",
        "-xrm", "*videoX: 620", "-xrm", "*videoY: 30", "-xrm", "*videoStepX: 200", "-xrm",
        "*videoStepY: 300"});
}

/// What the forms ask of the media.
struct UI_Media : QD_Media_Control {
    MOCK_METHOD(void, playVideo, (), (override));
    MOCK_METHOD(void, stopVideo, (), (override));
    MOCK_METHOD(void, playAudio, (), (override));
    MOCK_METHOD(void, stopAudio, (), (override));
    MOCK_METHOD(void, updateOptions, (_options*), (override));
    MOCK_METHOD(void, setMicCutoffLevel, (int), (override));
};

/// A main form in a window of its own.
struct UI_Main : VkSimpleWindow {
    UI_Main() : VkSimpleWindow((static_cast<void>(ui_app()), "main"))
    {
        XtVaSetValues(
            form.base_widget(), XmNwidth, MainForm::WIDTH, XmNheight, MainForm::HEIGHT, nullptr);
        form.setParent(&media);
        add_view(std::unique_ptr<VkComponent>(&form));
        show();
        qd_pump();
    }

    struct Form : MainForm {
        using MainForm::MainForm;
        using MainFormUI::_micMeter;
        using MainFormUI::_speakerMeter;
    };
    testing::StrictMock<UI_Media> media;
    Form& form = *new Form("mainForm", main_window_widget());
};

template <typename Value> Value ui_get(Widget widget, const char* resource)
{
    Value value {};
    XtVaGetValues(widget, resource, &value, nullptr);
    return value;
}
