#include "tests/ui/ui_test.h"

#include "signalling/session_control.h"
#include "ui/options_window.h"

#include <Xm/ToggleB.h>

// Not slips: the microphone is divided by 360 though its dial ends at 270, and
// "mute" silences both while "mic off" silences nothing; whole numbers round
// down on the way to the dial and back. The menu has no item for what is no
// connection, and shows the first.
TEST(Options, ComeBackAsTheyAlwaysHave)
{
    ui_app();
    const QD_Session_Ref session;
    testing::StrictMock<UI_Media> media;
    session->setGUI(&media, nullptr);
    struct {
        int connection;
        const char* codec;
        int volume, mic_volume;
        const char* switched; // by the user
        int connection_after, volume_after, mic_volume_after;
    } const cases[] = {{0, "GSM-13 kbps", 255, 255, nullptr, 0, 255, 191},
        {1, "ADPCM-32 kbps", 125, 125, nullptr, 1, 124, 93},
        {3, "PCM-128 kbps", 255, 255, "micOffToggle", 3, 255, 191},
        {4, "", 255, 255, "muteToggle", 0, 0, 0}, {-1, "", 900, -7, nullptr, 0, 255, 0},
        {2, "ADPCM-32 kbps", 0, 255, nullptr, 2, 0, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.connection);
        _options& options = *session->get_options();
        options = {.connection = static_cast<Connection>(c.connection),
            .volume = c.volume,
            .mic_volume = c.mic_volume,
            .fps_max = 25,
            .mic_cutoff = 30};
        auto* window = new OptionsWindowMainWindow("optionsWindow");
        window->show();
        qd_pump();
        const auto find = [&](const char* name) { return qd_find(window->base_widget(), name); };
        EXPECT_EQ(qd_text(window->base_widget(), "audioCompressionText"), c.codec);
        EXPECT_EQ(qd_text(window->base_widget(), "videoCompressionText"),
            c.connection == _modem28 ? "H.263" : "H.261");
        if (c.switched != nullptr)
            XmToggleButtonSetState(find(c.switched), True, True);
        EXPECT_CALL(media, updateOptions(&options));
        qd_click(find("okOptButton"));
        EXPECT_TRUE(theApplication->windows().empty());
        EXPECT_EQ(options.connection, c.connection_after);
        EXPECT_EQ(options.volume, c.volume_after);
        EXPECT_EQ(options.mic_volume, c.mic_volume_after);
        EXPECT_EQ(options.fps_max, 10) << "the nearer end of the scale";
        EXPECT_EQ(options.mic_cutoff, 30) << "no affair of the dialog's";
    }
    session->setGUI(nullptr, nullptr);
}
