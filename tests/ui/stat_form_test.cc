#include "tests/ui/ui_test.h"

#include "media/user_data.h"
#include "ui/stat_window.h"

#include <X11/keysym.h>
#include <Xm/List.h>

namespace {

/// Figures in the order of the form: audio, then video.
constexpr const char* FIELDS[]
    = {"audioRecText", "audioTotalText", "audioLostText", "audioLateText", "audioBwdText",
        "audioLatencyText", "videoRecText", "videoLostText", "videoBdwText", "videoFpsText"};

struct Stat : StatWindowMainWindow {
    Stat() : StatWindowMainWindow((static_cast<void>(ui_app()), "statWindow"))
    {
        show();
        qd_pump();
    }
    StatForm& form() { return *getStatForm(); }
    Calls figures()
    {
        Calls texts;
        for (const char* field : FIELDS)
            texts.push_back(ui_text(baseWidget(), field));
        return texts;
    }
    Calls lines() { return ui_lines(baseWidget(), "statUsersList"); }
    void select(int position)
    {
        XmListSelectPos(qd_find(baseWidget(), "statUsersList"), position, True);
    }
};

const Calls ZEROS(10, "0");

/// Eleven frames, ten of them at the end of time, where they stay in the window
/// of the rates: 1000 bytes each, one gap of 1500 ms and nine of none.
UserData some_figures()
{
    const rtp_fix_header header;
    const unsigned end = 0xffffffff;
    UserData figures(&header, 1000, end);
    figures.frame(&header, 1000, end - 1500);
    for (int i = 0; i < 10; ++i)
        figures.frame(&header, 1000, end);
    figures.frames_lost = 6;
    figures.frames_late = 3;
    return figures;
}

}

TEST(StatForm, HasItsLabels)
{
    Stat window;
    const char* const labels[] = {"Received:", "Audio:", "Participants:", "Video:", "Received:",
        "Lost:", "Late:", "Bandwidth:", "Total:", "Latency:", "Bandwidth:", "Frames/sec:", "Lost:"};
    for (size_t i = 0; i < std::size(labels); ++i)
        EXPECT_EQ(
            qd_label(qd_find(window.baseWidget(), ("label" + std::to_string(14 + i)).c_str())),
            labels[i]);
}

TEST(StatForm, ShowsTheFiguresOfBothMedia)
{
    Stat window;
    EXPECT_EQ(window.figures(), ZEROS);
    const UserData figures = some_figures();
    window.form().setAudioData(&figures);
    EXPECT_EQ(window.figures(),
        (Calls {"11", "17", "6", "3", "  16 kbps", " 45 ms", "0", "0", "0", "0"}));
    window.form().setVideoData(&figures);
    EXPECT_EQ(window.figures(),
        (Calls {"11", "17", "6", "3", "  16 kbps", " 45 ms", "11", "6", "  16 kbps", "2.0 fps"}));
}

// The audio figures come first and begin with a clean form; the video figures,
// which follow them, only add. So the two treat null differently.
TEST(StatForm, NoAudioZeroesTheVideoFieldsTooAndNoVideoLeavesAll)
{
    Stat window;
    const UserData figures = some_figures();
    window.form().setAudioData(&figures);
    window.form().setVideoData(&figures);
    const Calls full = window.figures();
    window.form().setVideoData(nullptr);
    EXPECT_EQ(window.figures(), full);
    window.form().setAudioData(nullptr);
    EXPECT_EQ(window.figures(), ZEROS);
    window.form().setVideoData(&figures);
    window.form().setAudioData(&figures);
    EXPECT_EQ(window.figures()[6], "0") << "the video fields, whatever they showed";
}

TEST(StatForm, KeepsTheSelectionAsItWasAdded)
{
    Stat window;
    for (const char* part : {"anna@vega", "x\xff\x01@lyra", "anna@vega"})
        window.form().addToUsersList(part);
    EXPECT_STREQ(window.form().getSelectedPart(), "");
    window.select(2);
    EXPECT_STREQ(window.form().getSelectedPart(), "x\xff\x01@lyra");
    EXPECT_EQ(window.lines()[1], "x\xef\xbf\xbd\xef\xbf\xbd@lyra");

    const UserData figures = some_figures();
    window.form().setAudioData(&figures);
    const Calls shown = window.figures();
    Widget list = qd_find(window.baseWidget(), "statUsersList");
    XmListDeselectAllItems(list);
    XmListCallbackStruct none {};
    XtCallCallbacks(list, XmNbrowseSelectionCallback, &none);
    EXPECT_STREQ(window.form().getSelectedPart(), "");
    EXPECT_EQ(window.figures(), shown) << "the figures stay";
}

TEST(StatForm, RemovesTheFirstEqualLine)
{
    Stat window;
    for (const char* part : {"b", "a", "c", "a"})
        window.form().addToUsersList(part);
    window.form().delFromUsersList("a");
    window.form().delFromUsersList("nobody");
    EXPECT_EQ(window.lines(), (Calls {"b", "c", "a"}));
    window.select(3);
    EXPECT_STREQ(window.form().getSelectedPart(), "a");
    window.form().delFromUsersList("b");
    window.select(1);
    EXPECT_STREQ(window.form().getSelectedPart(), "c");
}

TEST(StatForm, AHostNameOfAnyLengthIsSelectedWhole)
{
    Stat window;
    const std::string part = "user@" + std::string(250, 'h');
    window.form().addToUsersList(part.c_str());
    window.select(1);
    EXPECT_EQ(window.form().getSelectedPart(), part);
}

TEST(StatForm, CloseHidesAndTheKeyboardReachesAll)
{
    Stat window;
    for (const char* part : {"a", "b"})
        window.form().addToUsersList(part);
    qd_focus(window.baseWidget());
    QD_X_Server& server = ui_app().server();
    ASSERT_EQ(server.press("Down"), 0);
    EXPECT_TRUE(qd_pump_until([&] { return *window.form().getSelectedPart() != '\0'; }));
    ASSERT_EQ(server.press("Escape"), 0);
    EXPECT_TRUE(qd_pump_until([&] { return !window.shown(); }));
    window.show();
    qd_pump();
    EXPECT_EQ(qd_label(qd_find(window.baseWidget(), "statCloseButton")),
        "Schlie\xc3\x9f"
        "en")
        << "the user's label";
    qd_click(qd_find(window.baseWidget(), "statCloseButton"));
    EXPECT_FALSE(window.shown());
}

// The line's spelling is what those who read our output look for.
TEST(StatWindowMainWindow, ClosedByTheUserItHidesAndKeepsItsList)
{
    Stat window;
    EXPECT_EQ(window.title(), "Statistics");
    EXPECT_TRUE(window.okToQuit());
    window.form().addToUsersList("a");
    testing::internal::CaptureStdout();
    qd_close_window(window.baseWidget());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Hidding stat window\n");
    EXPECT_FALSE(window.shown());
    window.show();
    EXPECT_TRUE(qd_pump_until([&] { return qd_on_screen(window.baseWidget()); }));
    EXPECT_EQ(window.lines(), Calls {"a"});
}

TEST(StatForm, MayBeBuiltInTwoSteps)
{
    ui_app();
    struct Holder : VkSimpleWindow {
        Holder() : VkSimpleWindow("later") {}
    } window;
    StatForm form("form");
    EXPECT_STREQ(form.className(), "StatForm");
    EXPECT_EQ(form.baseWidget(), nullptr);
    form.create(window.mainWindowWidget());
    EXPECT_EQ(ui_text(form.baseWidget(), "audioRecText"), "0");
}
