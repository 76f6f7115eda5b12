#include "tests/ui/ui_test.h"

#include "ui/main_form.h"

#include <Xm/Scale.h>
#include <Xm/ToggleB.h>
#include <filesystem>
#include <fstream>
#include <thread>

namespace {

struct Form_Window : VkSimpleWindow {
    explicit Form_Window(const char* form = "mainForm") :
        VkSimpleWindow((static_cast<void>(ui_app()), "main")),
        form_(form, mainWindowWidget())
    {
        form_.setParent(&media_);
        addView(&form_);
        show();
        qd_pump();
    }
    Widget widget(const char* name) { return qd_find(baseWidget(), name); }

    struct Form : MainForm {
        using MainForm::MainForm;
        using MainFormUI::_autoToggle;
        using MainFormUI::_micMeter;
        using MainFormUI::_speakerMeter;
    };
    QD_Fake_Media media_;
    Form form_;
};

std::vector<std::string> users(Form_Window& window)
{
    return ui_lines(window.baseWidget(), "usersList");
}

}

TEST(MainForm, ShowsTheLabelsAndStatus)
{
    Form_Window window;
    struct {
        const char* widget;
        const char* label;
    } const cases[] = {
        {"label1", "Status:"},
        {"label12", "Mic"},
        {"label13", "Speaker"},
        {"label2", "A/V Control"},
        {"label3", "Switch:"},
        {"manualToggle", "Manual"},
        {"talkToggle", "Talk"},
        {"toggle", "Camera"},
        {"acceptButton", "Accept"},
        {"rejectButton", "Reject"},
        {"callButton", "Call"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(qd_label(window.widget(c.widget)), c.label);
    window.form_.setStatus("bernt@\xc3\xb6rsk\xff left");
    EXPECT_EQ(ui_text(window.baseWidget(), "statusText"), "bernt@\xc3\xb6rsk\xef\xbf\xbd left");
}

TEST(MainForm, RemovesTheFirstEqualUserOnly)
{
    Form_Window window;
    for (const char* user : {"a\xfe", "b", "a\xff", "b", "c"})
        window.form_.addUserToList(user);
    window.form_.delUserFromList("nobody");
    EXPECT_EQ(users(window).size(), 5u);
    window.form_.delUserFromList("b");
    window.form_.delUserFromList("a\xff"); // looks like the first line, and is the second
    EXPECT_EQ(users(window), (Calls {"a\xef\xbf\xbd", "b", "c"}));
    window.form_.delUserFromList("a\xff");
    EXPECT_EQ(users(window).size(), 3u);

    window.form_.reset(nullptr, nullptr);
    EXPECT_TRUE(users(window).empty());
    EXPECT_EQ(ui_text(window.baseWidget(), "statusText"), "Session reset completed");
}

// A meter is given what stays dark: silence is the largest value.
TEST(MainForm, LevelsBecomeUnlitUnitsOnceTheyAreDrawn)
{
    Form_Window window;
    window.form_.updateLevels();
    EXPECT_EQ(window.form_._micMeter->value(), -1) << "nothing to show before the first level";
    EXPECT_EQ(window.form_._micMeter->lit(), 0);
    struct {
        int level;
        int value;
    } const cases[] = {{0, 110}, {32767, 1}, {32768, 0}, {16384, 55}, {297, 110}, {298, 109},
        {-16384, 165}, {-1, 110}};
    for (const auto& c : cases) {
        window.form_.setMicLevel(c.level);
        window.form_.setSpeakerLevel(32767 - c.level);
        window.form_.updateLevels();
        EXPECT_EQ(window.form_._micMeter->value(), c.value) << c.level;
    }
    EXPECT_EQ(window.form_._speakerMeter->value(), 0);
    window.form_.setMicLevel(0);
    EXPECT_EQ(window.form_._micMeter->value(), 110) << "the last level";
    window.form_.setMicLevel(32767);
    EXPECT_EQ(window.form_._micMeter->value(), 110) << "drawn only when asked";
}

TEST(MainForm, LevelsMayComeFromOtherThreads)
{
    Form_Window window;
    std::thread capture([&] {
        for (int level = 0; level < 32768; ++level)
            window.form_.setMicLevel(level);
    });
    std::thread receive([&] {
        for (int level = 32767; level >= 0; --level)
            window.form_.setSpeakerLevel(level);
    });
    for (int i = 0; i < 100; ++i)
        window.form_.updateLevels();
    capture.join();
    receive.join();
    window.form_.updateLevels();
    EXPECT_EQ(window.form_._micMeter->value(), 1);
    EXPECT_EQ(window.form_._speakerMeter->value(), 110);
}

TEST(MainForm, CameraStartsAndStopsVideo)
{
    Form_Window window;
    qd_click(window.widget("toggle"));
    EXPECT_EQ(window.media_.take(), Calls {"playVideo"});
    qd_click(window.widget("toggle"));
    EXPECT_EQ(window.media_.take(), Calls {"stopVideo"});
}

TEST(MainForm, ACameraSetByItsResourceStartsOnceTheLocalMemberIsKnown)
{
    Form_Window window("lit");
    window.form_.applyStartState(false);
    EXPECT_EQ(window.media_.take(), Calls {});
    window.form_.applyStartState(true);
    window.form_.applyStartState(true);
    EXPECT_EQ(window.media_.take(), Calls {"playVideo"}) << "once";

    Form_Window changed("lit"); // the user is faster
    qd_click(changed.widget("toggle"));
    changed.form_.applyStartState(true);
    EXPECT_EQ(changed.media_.take(), Calls {"stopVideo"});

    Form_Window dark;
    dark.form_.applyStartState(true);
    EXPECT_EQ(dark.media_.take(), Calls {});
}

TEST(MainForm, TalkCountsInManualModeOnly)
{
    Form_Window window;
    Widget talk = window.widget("talkToggle");
    Widget manual = window.widget("manualToggle");
    EXPECT_TRUE(XmToggleButtonGetState(talk));
    EXPECT_FALSE(XmToggleButtonGetState(manual));
    qd_click(talk);
    qd_click(talk);
    EXPECT_EQ(window.media_.take(), Calls {});

    qd_click(manual);
    EXPECT_EQ(window.media_.take(), Calls {}) << "becoming manual does nothing by itself";
    qd_click(talk);
    qd_click(talk);
    EXPECT_EQ(window.media_.take(), (Calls {"stopAudio", "playAudio"}));
    qd_click(manual);
    EXPECT_EQ(window.media_.take(), Calls {"playAudio"}) << "automatic again";
}

TEST(MainForm, TheScaleSetsTheCutOffInItsRange)
{
    Form_Window window;
    Widget scale = window.widget("micScale");
    int value = 30;
    XmScaleSetValue(scale, value);
    XmScaleCallbackStruct data {XmCR_VALUE_CHANGED, nullptr, value};
    XtCallCallbacks(scale, XmNvalueChangedCallback, &data);
    XmScaleSetValue(scale, 31);
    XtCallCallbacks(scale, XmNdragCallback, &data);
    EXPECT_EQ(window.media_.take(), (Calls {"setMicCutoffLevel 30", "setMicCutoffLevel 31"}));
    int minimum = -1;
    int maximum = -1;
    XtVaGetValues(scale, XmNminimum, &minimum, XmNmaximum, &maximum, nullptr);
    EXPECT_EQ(minimum, 0);
    EXPECT_EQ(maximum, 99);
}

TEST(MainForm, WithoutAMainWindowTheControlsDoNothing)
{
    Form_Window window;
    window.form_.setParent(nullptr);
    for (const char* control : {"toggle", "manualToggle", "talkToggle", "manualToggle"})
        qd_click(window.widget(control));
    EXPECT_EQ(window.media_.take(), Calls {});
}

// Nothing makes them sensitive again, not even an invitation.
TEST(MainForm, RejectingOnceEndsAcceptingForGood)
{
    Form_Window window;
    qd_click(window.widget("acceptButton"));
    EXPECT_TRUE(XtIsSensitive(window.widget("acceptButton")));
    EXPECT_TRUE(XtIsSensitive(window.widget("rejectButton")));
    qd_click(window.widget("rejectButton"));
    window.form_.activateButtons(1);
    EXPECT_FALSE(XtIsSensitive(window.widget("acceptButton")));
    EXPECT_FALSE(XtIsSensitive(window.widget("rejectButton")));
    EXPECT_TRUE(XtIsSensitive(window.form_.callButton()));
}

TEST(MainForm, WhatIsMissingSaysSo)
{
    Form_Window window;
    testing::internal::CaptureStderr();
    XtCallCallbacks(window.form_._autoToggle, XmNvalueChangedCallback, nullptr);
    window.form_.conf(nullptr, nullptr);
    window.form_.overview(nullptr, nullptr);
    window.form_.users(nullptr, nullptr);
    window.form_.chat(nullptr, nullptr);
    std::string said = testing::internal::GetCapturedStderr();
    for (const char* name : {"autoSwitch", "conf", "overview", "users"})
        EXPECT_NE(
            said.find(std::string("MainForm::") + name + ": not implemented\n"), std::string::npos)
            << name;
    EXPECT_EQ(said.find("chat"), std::string::npos);
}

TEST(MainForm, TheAudioPanelIsStartedInTheBackground)
{
    Form_Window window;
    const std::filesystem::path bin = std::filesystem::path(std::getenv("HOME")) / "bin";
    std::filesystem::create_directory(bin);
    std::ofstream(bin / "apanel")
        << "#!/bin/sh\ntouch \"$HOME/panel-was-here\"\nexec sleep 3 >&- 2>&-\n";
    std::filesystem::permissions(bin / "apanel", std::filesystem::perms::owner_all);
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", (bin.string() + ":" + path).c_str(), 1);
    const auto before = std::chrono::steady_clock::now();
    window.form_.audioPanel(nullptr, nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(2));
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_TRUE(qd_pump_until(
        [&] { return std::filesystem::exists(bin.parent_path() / "panel-was-here"); }));
}

TEST(MainForm, TheStatisticsWindowComesWhenAskedFor)
{
    Form_Window window;
    EXPECT_FALSE(window.form_.getStatWnd()->shown());
    window.form_.statistics(nullptr, nullptr);
    EXPECT_TRUE(
        qd_pump_until([&] { return qd_on_screen(window.form_.getStatWnd()->baseWidget()); }));

    Form_Window told("shown");
    EXPECT_TRUE(told.form_.getStatWnd()->shown()) << "by its resource";
}
