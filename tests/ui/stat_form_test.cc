#include "tests/ui/ui_test.h"

#include "media/user_data.h"
#include "ui/stat_window.h"

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
    ui_expect_labels(window.baseWidget(),
        {{"label14", "Received:"}, {"label15", "Audio:"}, {"label16", "Participants:"},
            {"label17", "Video:"}, {"label18", "Received:"}, {"label19", "Lost:"},
            {"label20", "Late:"}, {"label21", "Bandwidth:"}, {"label22", "Total:"},
            {"label23", "Latency:"}, {"label24", "Bandwidth:"}, {"label25", "Frames/sec:"},
            {"label26", "Lost:"},
            {"statCloseButton",
                "Schlie\xc3\x9f"
                "en"}}); // the user's label
}

// The audio figures come first and begin with a clean form; the video figures,
// which follow them, only add. So the two treat null differently.
TEST(StatForm, AudioFiguresBeginAfreshAndVideoFiguresAdd)
{
    Stat window;
    EXPECT_EQ(window.figures(), ZEROS);
    const UserData figures = some_figures();
    const Calls audio {"11", "17", "6", "3", "  16 kbps", " 45 ms", "0", "0", "0", "0"};
    const Calls both {
        "11", "17", "6", "3", "  16 kbps", " 45 ms", "11", "6", "  16 kbps", "2.0 fps"};
    window.form().setAudioData(&figures);
    EXPECT_EQ(window.figures(), audio);
    window.form().setVideoData(&figures);
    EXPECT_EQ(window.figures(), both);
    window.form().setVideoData(nullptr);
    EXPECT_EQ(window.figures(), both);
    window.form().setAudioData(&figures);
    EXPECT_EQ(window.figures(), audio);
    window.form().setVideoData(&figures);
    window.form().setAudioData(nullptr);
    EXPECT_EQ(window.figures(), ZEROS);
}

TEST(StatForm, KeepsTheSelectionAsItWasAdded)
{
    Stat window;
    const std::string part = "x\xff\x01@" + std::string(250, 'h');
    for (const char* one : {"anna@vega", part.c_str(), "anna@vega"})
        window.form().addToUsersList(one);
    EXPECT_STREQ(window.form().getSelectedPart(), "");
    window.select(2);
    EXPECT_EQ(window.form().getSelectedPart(), part);
    window.form().delFromUsersList("anna@vega");
    EXPECT_EQ(window.form().getSelectedPart(), part) << "though a line before it is gone";
    EXPECT_EQ(window.lines()[0].substr(0, 8), "x\xef\xbf\xbd\xef\xbf\xbd@");

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
