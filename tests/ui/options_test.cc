#include "tests/ui/ui_test.h"

#include "platform/vk/text.h"
#include "signalling/session_control.h"
#include "ui/main_form.h"
#include "ui/options_window.h"

#include <Xm/Scale.h>
#include <Xm/ToggleB.h>
#include <filesystem>
#include <fstream>

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

    /// Where the dial points, by the keyboard's way to it.
    void turn(const char* dial, const char* by)
    {
        String params[] = {const_cast<String>(by)};
        XEvent none {};
        XtCallActionProc(widget(dial), "VkDialTurn", &none, params, 1);
    }
    const _options& options() { return *session_->get_options(); }

    QD_Session_Ref session_;
    QD_Fake_Media media_;
    OptionsWindowMainWindow* window_ = nullptr;
};

_options levels(int volume, int mic_volume)
{
    _options options;
    options.volume = volume;
    options.mic_volume = mic_volume;
    return options;
}

}

TEST(Options, SaysWhatItSays)
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
}

TEST(Options, EveryTextFitsOnEveryPage)
{
    Dialog dialog;
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
        bool mute, mic_off; // switched by the user
        int volume_after, mic_volume_after;
    } const cases[] = {{255, 255, false, false, 255, 191}, {125, 125, false, false, 124, 93},
        {255, 255, false, true, 255, 191}, {255, 255, true, false, 0, 0},
        {100, 0, false, false, 99, 0}, {0, 255, false, false, 0, 0},
        {900, -7, false, false, 255, 0}};
    for (const auto& c : cases) {
        Dialog dialog(levels(c.volume, c.mic_volume));
        EXPECT_EQ(dialog.set("muteToggle"), c.volume == 0);
        EXPECT_EQ(dialog.set("micOffToggle"), c.mic_volume == 0);
        for (const auto& [toggle, on] :
            {std::pair("muteToggle", c.mute), std::pair("micOffToggle", c.mic_off)})
            if (on)
                XmToggleButtonSetState(dialog.widget(toggle), True, True);
        dialog.press("applyOptButton");
        EXPECT_EQ(dialog.options().volume, c.volume_after) << c.volume;
        EXPECT_EQ(dialog.options().mic_volume, c.mic_volume_after) << c.mic_volume;
    }
}

TEST(Options, AppliesWhatTheWidgetsShowAndNothingElse)
{
    _options before = levels(125, 125);
    before.mic_cutoff = 30;
    before.fps_max = 25;
    Dialog dialog(before);
    EXPECT_EQ(ui_get<int>(dialog.widget("scale"), XmNvalue), 10) << "the nearer end";
    XmScaleSetValue(dialog.widget("scale"), 3);
    XmToggleButtonSetState(dialog.widget("recOffToggle"), True, True);
    dialog.turn("volumeDial", "100%");
    dialog.turn("micDial", "-100%");
    EXPECT_EQ(dialog.options().volume, 125);
    dialog.press("applyOptButton");
    EXPECT_EQ(dialog.media_.take(), Calls {"updateOptions"});
    const _options& after = dialog.options();
    EXPECT_EQ(std::tie(after.volume, after.mic_volume, after.fps_max, after.mic_cutoff),
        std::tuple(255, 0, 3, 30));
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

TEST(Options, CancelKeepsWhatWasAppliedAndDropsTheRest)
{
    Dialog dialog;
    XmScaleSetValue(dialog.widget("scale"), 4);
    dialog.press("applyOptButton");
    dialog.press("fpsDefaultButton");
    EXPECT_EQ(ui_get<int>(dialog.widget("scale"), XmNvalue), 10);
    dialog.press("cancelOptButton");
    EXPECT_EQ(Dialog::find(), nullptr);
    EXPECT_EQ(dialog.options().fps_max, 4);
    dialog.open();
    qd_close_window(dialog.window_->baseWidget());
    EXPECT_EQ(Dialog::find(), nullptr) << "the window manager's way";
    EXPECT_EQ(dialog.media_.take(), Calls {"updateOptions"});
}

TEST(Options, TheKeyboardReachesAllAndReturnAndEscapeClose)
{
    const struct {
        const char* page;
        const char* stops; // after the tab, until it comes round
    } cases[] = {{"general", "OptionButton okOptButton applyOptButton cancelOptButton "},
        {"audio",
            "volumeDial micDial muteToggle micOffToggle okOptButton applyOptButton "
            "cancelOptButton "},
        {"video",
            "Scrollbar fpsDefaultButton recOffToggle videoPanelButton okOptButton "
            "applyOptButton cancelOptButton "}};
    QD_X_Server& server = ui_app().server();
    for (const auto& c : cases) {
        Dialog dialog;
        dialog.front(c.page);
        const auto focus = [&] { return XmGetFocusWidget(dialog.window_->baseWidget()); };
        const auto next = [&] {
            const Widget before = focus();
            EXPECT_EQ(server.press("Tab"), 0);
            return qd_pump_until([&] { return focus() != before; });
        };
        const Widget tab = focus();
        EXPECT_EQ(XtName(tab), std::string(c.page) + "OptionsFormTab");
        std::string stops;
        size_t count = 0;
        while (next() && focus() != tab && ++count < 20)
            stops += std::string(XtName(focus())) + " ";
        EXPECT_EQ(stops, c.stops);

        // From everywhere; but a button that has the keyboard is what Return presses.
        for (size_t at = 0; at <= count; ++at) {
            for (const char* key : {"Return", "Escape"}) {
                const std::string stop = XtName(focus());
                if (*key == 'R' && stop.ends_with("Button") && stop != "OptionButton")
                    continue;
                ASSERT_EQ(server.press(key), 0);
                EXPECT_TRUE(qd_pump_until([&] { return Dialog::find() == nullptr; }))
                    << key << " " << c.page << " " << stop;
                EXPECT_EQ(dialog.media_.take().size(), *key == 'R');
                dialog.open();
                dialog.front(c.page);
                for (size_t i = 0; i < at + (*key == 'E'); ++i)
                    EXPECT_TRUE(next());
            }
        }
    }
}

TEST(Options, TheVideoPanelIsStartedInTheBackground)
{
    Dialog dialog;
    const std::filesystem::path bin = std::filesystem::path(std::getenv("HOME")) / "bin";
    std::filesystem::create_directory(bin);
    std::ofstream(bin / "videopanel") << "#!/bin/sh\ntouch \"$HOME/video-panel-was-here\"\n";
    std::filesystem::permissions(bin / "videopanel", std::filesystem::perms::owner_all);
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", (bin.string() + ":" + path).c_str(), 1);
    dialog.press("videoPanelButton");
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_TRUE(qd_pump_until(
        [&] { return std::filesystem::exists(bin.parent_path() / "video-panel-was-here"); }));
}

TEST(Options, TheMainFormOpensOneAnewEachTimeAndTakesThemAlong)
{
    ui_app();
    struct Holder : VkSimpleWindow {
        Holder() : VkSimpleWindow("main"), form_(new MainForm("mainForm", mainWindowWidget())) {}
        std::unique_ptr<MainForm> form_;
    } window;
    for (int i = 0; i < 2; ++i) {
        OptionsWindowMainWindow* before = Dialog::find();
        window.form_->options(nullptr, nullptr);
        EXPECT_NE(Dialog::find(), before);
        EXPECT_TRUE(qd_pump_until([] { return qd_on_screen(Dialog::find()->baseWidget()); }));
    }
    window.form_.reset();
    EXPECT_EQ(theApplication->windows().back(), &window);
}
