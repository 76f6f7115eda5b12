#include "tests/ui/ui_test.h"

#include "media/base/user_data.h"

#include <Xm/List.h>

// The audio figures come first and begin with a clean form; the video figures,
// which follow them, only add. So the two treat null differently.
TEST(StatForm, AudioFiguresBeginAfreshAndVideoFiguresAdd)
{
    // Ten frames of 1000 bytes at the end of time, where they stay in the window of the rates.
    const rtp_fix_header header;
    const unsigned end = 0xffffffff;
    UserData figures(&header, 1000, end);
    for (int i = 0; i < 10; ++i)
        figures.frame(&header, 1000, end);
    figures.frames_lost = 6;
    figures.frames_late = 3;

    ui_app();
    StatWindowMainWindow window("statWindow");
    const auto shown = [&] {
        std::vector<std::string> texts;
        for (const char* field : {"audioRecText", "audioTotalText", "audioLostText",
                 "audioLateText", "audioBwdText", "audioLatencyText", "videoRecText",
                 "videoLostText", "videoBdwText", "videoFpsText"})
            texts.push_back(qd_text(window.base_widget(), field));
        return texts;
    };
    StatForm& form = *window.getStatForm();
    form.setAudioData(&figures);
    form.setVideoData(&figures);
    form.setVideoData(nullptr);
    EXPECT_THAT(shown(),
        testing::ElementsAre(
            "10", "16", "6", "3", "  14 kbps", "-90 ms", "10", "6", "  14 kbps", "1.8 fps"));
    form.setAudioData(nullptr);
    EXPECT_THAT(shown(), testing::Each("0"));
}

TEST(StatForm, ClosedByTheUserItHidesAndKeepsTheSelectionAsItWasAdded)
{
    ui_app();
    StatWindowMainWindow window("statWindow");
    window.show();
    StatForm& form = *window.getStatForm();
    const Widget list = qd_find(window.base_widget(), "statUsersList");
    for (const char* part : {"anna@vega", "x\xff\x01@vega"})
        form.addToUsersList(part);
    EXPECT_STREQ(form.getSelectedPart(), "");
    XmListSelectPos(list, 2, True);
    form.delFromUsersList("anna@vega");
    testing::internal::CaptureStdout();
    qd_close_window(window.base_widget());
    // The line's spelling is what those who read our output look for.
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Hidding stat window\n");
    EXPECT_FALSE(window.shown());
    EXPECT_STREQ(form.getSelectedPart(), "x\xff\x01@vega");
    XmListDeselectAllItems(list);
    XmListCallbackStruct none {};
    XtCallCallbacks(list, XmNbrowseSelectionCallback, &none);
    EXPECT_STREQ(form.getSelectedPart(), "");
}
