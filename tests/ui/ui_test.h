// The application that the forms' tests share.
#pragma once

#include <gtest/gtest.h> // before all X headers: their macros would spoil it

#include "signalling/views.h"
#include "tests/support/x_app.h"
#include "ui/main_form.h"

#include <Xm/TextF.h>
#include <string>
#include <vector>

inline QD_Test_App& ui_app()
{
    return QD_Test_App::get({"-xrm", "*statWindow.geometry: +300+7", "-xrm",
        "*statCloseButton.labelString: Schlie\xc3\x9f"
        "en",
        "-xrm", "*lit*toggle.set: True", "-xrm", "*placed.videoX: 620", "-xrm",
        "*placed.videoY: 30", "-xrm", "*placed.videoStepX: 200", "-xrm",
        "*placed.videoStepY: 300"});
}

/// Writes down what the forms ask of the media.
struct QD_Fake_Media : QD_Media_Control {
    void playVideo() override { calls_.push_back("playVideo"); }
    void stopVideo() override { calls_.push_back("stopVideo"); }
    void playAudio() override { calls_.push_back("playAudio"); }
    void stopAudio() override { calls_.push_back("stopAudio"); }
    void updateOptions(_options*) override { calls_.push_back("updateOptions"); }
    void setMicCutoffLevel(int level) override
    {
        calls_.push_back("setMicCutoffLevel " + std::to_string(level));
    }

    /// What was asked since the last call.
    std::vector<std::string> take() { return std::exchange(calls_, {}); }

    std::vector<std::string> calls_;
};

using Calls = std::vector<std::string>;

/// A main form of its usual size in a window of its own.
struct UI_Main : VkSimpleWindow {
    explicit UI_Main(const char* form = "mainForm") :
        VkSimpleWindow((static_cast<void>(ui_app()), "main")),
        form_(form, mainWindowWidget())
    {
        XtVaSetValues(form_.baseWidget(), XmNwidth, 234, XmNheight, 298, nullptr);
        form_.setParent(&media_);
        addView(&form_);
        show();
        qd_pump();
    }
    Widget widget(const char* name) { return qd_find(baseWidget(), name); }

    struct Form : MainForm {
        using MainForm::MainForm;
        using MainFormUI::_micMeter;
        using MainFormUI::_speakerMeter;
    };
    QD_Fake_Media media_;
    Form form_;
};

template <typename Value> Value ui_get(Widget widget, const char* resource)
{
    Value value {};
    XtVaGetValues(widget, resource, &value, nullptr);
    return value;
}

/// "WIDTHxHEIGHT"
inline std::string ui_size(Widget widget)
{
    return std::to_string(ui_get<Dimension>(widget, XmNwidth)) + "x"
        + std::to_string(ui_get<Dimension>(widget, XmNheight));
}

inline std::string ui_text(Widget top, const char* field)
{
    char* text = XmTextFieldGetString(qd_find(top, field));
    std::string out = text;
    XtFree(text);
    return out;
}

/// What the labels and buttons below `top` say.
inline void ui_expect_labels(
    Widget top, std::initializer_list<std::pair<const char*, const char*>> labels)
{
    for (const auto& [name, label] : labels)
        EXPECT_EQ(qd_label(qd_find(top, name)), label) << name;
}

/// The lines of the list `name` below `top`.
std::vector<std::string> ui_lines(Widget top, const char* name);

/// Each managed widget below `top` that is smaller than it wants to be, lies
/// outside its parent or over a sibling; one line each, "" if none.
std::string ui_misfits(Widget top);
