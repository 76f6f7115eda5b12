#include "tests/ui/ui_test.h"

#include "ui/main_form.h"

#include <Xm/Scale.h>
#include <Xm/ToggleB.h>
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
        using MainFormUI::_micMeter;
        using MainFormUI::_speakerMeter;
    };
    QD_Fake_Media media_;
    Form form_;
};

Calls users(Form_Window& window) { return ui_lines(window.baseWidget(), "usersList"); }

}

TEST(MainForm, ShowsTheLabelsAndStatus)
{
    Form_Window window;
    ui_expect_labels(window.baseWidget(),
        {{"label1", "Status:"}, {"label12", "Mic"}, {"label13", "Speaker"},
            {"label2", "A/V Control"}, {"label3", "Switch:"}, {"manualToggle", "Manual"},
            {"talkToggle", "Talk"}, {"toggle", "Camera"}, {"acceptButton", "Accept"},
            {"rejectButton", "Reject"}, {"callButton", "Call"}});
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
    for (const auto& [level, value] :
        std::initializer_list<std::pair<int, int>> {{0, 110}, {32767, 1}, {32768, 0}, {16384, 55},
            {297, 110}, {298, 109}, {-16384, 165}, {-1, 110}}) {
        window.form_.setMicLevel(level);
        window.form_.setSpeakerLevel(32767 - level);
        window.form_.updateLevels();
        EXPECT_EQ(window.form_._micMeter->value(), value) << level;
    }
    EXPECT_EQ(window.form_._speakerMeter->value(), 0);
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
    EXPECT_TRUE(XmToggleButtonGetState(window.widget("talkToggle")));
    struct {
        const char* toggle;
        Calls asked;
    } const clicks[] = {{"talkToggle", {}}, {"talkToggle", {}}, {"manualToggle", {}},
        {"talkToggle", {"stopAudio"}}, {"talkToggle", {"playAudio"}},
        {"manualToggle", {"playAudio"}}};
    for (const auto& click : clicks) {
        qd_click(window.widget(click.toggle));
        EXPECT_EQ(window.media_.take(), click.asked) << &click - clicks;
    }
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
    EXPECT_EQ(ui_get<int>(scale, XmNminimum), 0);
    EXPECT_EQ(ui_get<int>(scale, XmNmaximum), 99);
}
