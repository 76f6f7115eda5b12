#include "tests/ui/ui_test.h"

#include "platform/vk/text.h"
#include "signalling/session_control.h"
#include "ui/options_window.h"

#include <Xm/ToggleB.h>

namespace {

/// The dialog over a session of its own, whose options begin as the test says.
struct Dialog {
    explicit Dialog(const _options& options = {})
    {
        ui_app();
        *session_->get_options() = options;
        session_->setGUI(&media_, nullptr);
        open();
    }
    ~Dialog()
    {
        while (find() != nullptr)
            delete find();
        session_->setGUI(nullptr, nullptr);
    }

    /// The newest options window, null without one.
    static OptionsWindowMainWindow* find()
    {
        return theApplication->windows().empty()
            ? nullptr
            : dynamic_cast<OptionsWindowMainWindow*>(theApplication->windows().back());
    }

    void open()
    {
        window_ = new OptionsWindowMainWindow("optionsWindow");
        window_->show();
        qd_focus(window_->baseWidget());
    }

    Widget widget(const std::string& name) { return qd_find(window_->baseWidget(), name.c_str()); }
    std::string text(const char* field) { return ui_text(window_->baseWidget(), field); }
    bool set(const char* toggle) { return XmToggleButtonGetState(widget(toggle)); }
    void press(const char* button)
    {
        XtCallCallbacks(widget(button), XmNactivateCallback, nullptr);
    }
    void front(const std::string& page) { qd_click(widget(page + "OptionsFormTab")); }

    const _options& options() { return *session_->get_options(); }

    QD_Session_Ref session_;
    QD_Fake_Media media_;
    OptionsWindowMainWindow* window_ = nullptr;
};

}

TEST(Options, SaysWhatItSaysAndEveryTextFitsOnEveryPage)
{
    Dialog dialog;
    EXPECT_EQ(dialog.window_->title(), "Options");
    ui_expect_labels(dialog.window_->baseWidget(),
        {{"okOptButton", "OK"}, {"applyOptButton", "Apply"}, {"cancelOptButton", "Cancel"},
            {"generalOptionsFormTab", "General"}, {"connectionMenu", "Connection:"},
            {"modemButton", "Modem 28.8"}, {"isdn1Button", "ISDN-1"}, {"isdn2Button", "ISDN-2"},
            {"lanButton", "LAN"}, {"audioOptionsFormTab", "Audio"}, {"label4", "Compression:"},
            {"label5", "Mode:"}, {"label10", "Volume"}, {"label11", "Mic Gain"},
            {"muteToggle", "mute"}, {"micOffToggle", "mic off"}, {"videoOptionsFormTab", "Video"},
            {"label6", "Compression:"}, {"fpsDefaultButton", "Default"},
            {"videoPanelButton", "Video Panel"}, {"recOffToggle", "receive Off"}});
    auto* const title = ui_get<XmString>(dialog.widget("scale"), XmNtitleString);
    EXPECT_TRUE(XmStringCompare(title, VkString("Frame rate").get()));
    XmStringFree(title);
    EXPECT_EQ(dialog.text("audioModeText"), "Full Duplex");

    EXPECT_EQ(ui_size(dialog.widget("optionsForm")), "314x380");
    for (const char* page : {"general", "audio", "video"}) {
        dialog.front(page);
        EXPECT_TRUE(qd_on_screen(dialog.widget(std::string(page) + "OptionsForm")));
        EXPECT_EQ(ui_misfits(dialog.widget("optionsForm")), "") << page;
    }
}

TEST(Options, EachConnectionHasItsTextsAndIsWrittenBack)
{
    struct {
        int connection;
        const char* audio;
        const char* video;
        int written; // the menu has no item for what is no connection, and shows the first
    } const cases[] = {{0, "GSM-13 kbps", "H.263", 0}, {1, "ADPCM-32 kbps", "H.261", 1},
        {2, "ADPCM-32 kbps", "H.261", 2}, {3, "PCM-128 kbps", "H.261", 3}, {4, "", "H.261", 0},
        {-1, "", "H.261", 0}};
    for (const auto& c : cases) {
        _options options;
        options.connection = static_cast<Connection>(c.connection);
        Dialog dialog(options);
        EXPECT_EQ(dialog.text("audioCompressionText"), c.audio);
        EXPECT_EQ(dialog.text("videoCompressionText"), c.video);
        dialog.press("applyOptButton");
        EXPECT_EQ(dialog.options().connection, c.written);
    }
}

// Not slips: the microphone is divided by 360 though its dial ends at 270, and
// "mute" silences both while "mic off" silences nothing; whole numbers round
// down on the way to the dial and back.
TEST(Options, LevelsComeBackAsTheyAlwaysHave)
{
    struct {
        int volume, mic_volume;
        const char* switched; // by the user
        int volume_after, mic_volume_after;
    } const cases[] = {{255, 255, "", 255, 191}, {125, 125, "", 124, 93},
        {255, 255, "micOffToggle", 255, 191}, {255, 255, "muteToggle", 0, 0}, {100, 0, "", 99, 0},
        {0, 255, "", 0, 0}, {900, -7, "", 255, 0}};
    for (const auto& c : cases) {
        _options options;
        options.volume = c.volume;
        options.mic_volume = c.mic_volume;
        options.fps_max = 25;
        options.mic_cutoff = 30;
        Dialog dialog(options);
        EXPECT_EQ(dialog.set("muteToggle"), c.volume == 0);
        EXPECT_EQ(dialog.set("micOffToggle"), c.mic_volume == 0);
        if (*c.switched)
            XmToggleButtonSetState(dialog.widget(c.switched), True, True);
        dialog.press("applyOptButton");
        EXPECT_EQ(dialog.options().volume, c.volume_after) << c.volume;
        EXPECT_EQ(dialog.options().mic_volume, c.mic_volume_after) << c.mic_volume;
        EXPECT_EQ(dialog.options().fps_max, 10) << "the nearer end of the scale";
        EXPECT_EQ(dialog.options().mic_cutoff, 30) << "no affair of the dialog's";
    }
}

// The texts belong to what was chosen when the dialog was opened.
TEST(Options, CodecTextsStayUntilTheDialogIsOpenedAgain)
{
    Dialog dialog;
    XtVaSetValues(
        dialog.widget("connectionMenu"), XmNmenuHistory, dialog.widget("lanButton"), nullptr);
    dialog.press("applyOptButton");
    EXPECT_EQ(dialog.options().connection, _lan);
    EXPECT_EQ(dialog.text("audioCompressionText"), "GSM-13 kbps");
    dialog.press("okOptButton");
    EXPECT_EQ(Dialog::find(), nullptr);
    EXPECT_EQ(dialog.media_.take(), (Calls {"updateOptions", "updateOptions"}));
    dialog.open();
    EXPECT_EQ(dialog.text("audioCompressionText"), "PCM-128 kbps");
    EXPECT_EQ(dialog.text("videoCompressionText"), "H.261");
}
