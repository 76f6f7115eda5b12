#include "app/main_window.h"

#include "app/actions.h"
#include "app/control_loop.h"
#include "platform/base/process_end.h"
#include "platform/vk/app.h"
#include "platform/vk/wm_hints.h"
#include "signalling/peer_lines.h"

#include <X11/StringDefs.h>
#include <Xm/Xm.h>
#include <cstdlib>

namespace {

constexpr std::chrono::milliseconds LEVELS_EVERY {50};

// Entries of panes that are not built keep their texts for those who add them.
constexpr VkResource DEFAULTS[] = {
    {".title", "Quendal Videoconferencing"},
    {"*filePane.labelString", "File"},
    {"*filePane.mnemonic", "F"},
    {"*resetButton.labelString", "Reset Session"},
    {"*resetButton.mnemonic", "R"},
    {"*resetButton.accelerator", "Ctrl<Key>R"},
    {"*resetButton.acceleratorText", "Ctrl+R"},
    {"*exitButton.labelString", "Exit"},
    {"*exitButton.mnemonic", "x"},
    {"*exitButton.accelerator", "Ctrl<Key>Q"},
    {"*exitButton.acceleratorText", "Ctrl+Q"},
    {"*editPane.labelString", "Edit"},
    {"*editPane.mnemonic", "E"},
    {"*optionsButton.labelString", "Options"},
    {"*optionsButton.mnemonic", "O"},
    {"*optionsButton.accelerator", "Ctrl<Key>O"},
    {"*optionsButton.acceleratorText", "Ctrl+O"},
    {"*viewPane.labelString", "View"},
    {"*viewPane.mnemonic", "V"},
    {"*audioPanelButton.labelString", "Audio Panel"},
    {"*audioPanelButton.mnemonic", "P"},
    {"*statButton.labelString", "Statistics"},
    {"*statButton.mnemonic", "S"},
    {"*statButton.accelerator", "Ctrl<Key>S"},
    {"*statButton.acceleratorText", "Ctrl+S"},
    {"*toolsPane.labelString", "Tools"},
    {"*toolsPane.mnemonic", "T"},
    {"*chatButton.labelString", "Text Chat"},
    {"*chatButton.mnemonic", "C"},
    {"*helpPane.labelString", "Help"},
    {"*helpPane.mnemonic", "H"},
    {"*help_overview.labelString", "Overview"},
    {"*help_overview.mnemonic", "O"},
    {"*directoryPane.labelString", "Directory"},
    {"*usersButton.labelString", "Active Users"},
    {"*usersButton.mnemonic", "U"},
    {"*confButton.labelString", "Conferences"},
    {"*confButton.mnemonic", "C"},
};

MainWindowMainWindow* window(XtPointer self) { return static_cast<MainWindowMainWindow*>(self); }

}

MainWindowMainWindow::MainWindowMainWindow(const char* name, char** argv, int argc, int wake_fd) :
    VkWindow(name, DEFAULTS),
    displays_(base_widget())
{
    qd_add_actions(theApplication->app_context());
    form_ = new MainForm("mainForm", main_window_widget());
    XtVaSetValues(
        form_->base_widget(), XtNwidth, MainForm::WIDTH, XtNheight, MainForm::HEIGHT, nullptr);
    add_view(std::unique_ptr<VkComponent>(form_));
    form_->setParent(this);
    XtAddCallback(form_->callButton(), XmNactivateCallback, callCallback, this);
    build_menus();
    set_first_focus(form_->usersList());
    VkConfigureWM(base_widget(), 1, 0, 1, 1, 0, 1, 1);

    session_ = QD_Session_Control::instance();
    session_->set_display_factory(&displays_);
    XtSetSensitive(form_->callButton(), session_->call_policy().any() ? True : False);
    framework_ = std::make_unique<QD_Orvik_Control>(argc, argv);
    session_->setGUI(this, form_);
    reactor_.add_wake(theApplication->connection_number());
    reactor_.add_wake(session_->get_wake().get());
    reactor_.add_wake(wake_fd);
    reactor_.set_poll([](pollfd* polled, nfds_t count, int milliseconds) {
        return theApplication->poll(polled, count, milliseconds);
    });
    session_->set_reactor(&reactor_);
    listener_.open(); // without it the conference goes on, only nobody can call
    audio_ = std::make_unique<QD_AudioApp>();
    audio_->init();
    video_ = std::make_unique<QD_VideoApp>();
    video_->init();
}

void MainWindowMainWindow::build_menus()
{
    VkMenuPane* file = add_menu_pane("filePane");
    file->add_action("exitButton", quitCallback, this);
    VkMenuPane* edit = add_menu_pane("editPane");
    edit->add_action("optionsButton", optionsCallback, this);
    VkMenuPane* view = add_menu_pane("viewPane");
    view->add_action("audioPanelButton", audioPanelCallback, this);
    view->add_action("statButton", statisticsCallback, this);
}

// Every way out begins here: audio, then video, the idle procedure, the form.
void MainWindowMainWindow::close_media()
{
    session_->print_statistics();
    if (audio_)
        audio_->close();
    audio_.reset();
    if (video_)
        video_->close();
    video_.reset();
    qd_stop_control_loop();
    session_->setGUI(nullptr, nullptr);
    session_->set_reactor(nullptr);
    delete call_window_;
    listener_.close();
    reactor_.clear(); // the member streams
    destroy_widgets();
}

MainWindowMainWindow::~MainWindowMainWindow()
{
    close_media();
    framework_.reset();
    QD_Session_Control::destroy();
}

bool MainWindowMainWindow::okToQuit()
{
    qd_end_within(END_SECONDS, EXIT_SUCCESS);
    close_media();
    QD_Session_Control::destroy(); // the framework control, which stays, is the last holder
    exit(EXIT_SUCCESS);
}

void MainWindowMainWindow::quit()
{
    qd_end_within(END_SECONDS, EXIT_SUCCESS);
    close_media();
    framework_.reset();
    QD_Session_Control::destroy();
    exit(EXIT_SUCCESS);
}

int MainWindowMainWindow::handle_events(int wait_ms)
{
    const int result = framework_->handle_events(wait_ms);
    reactor_.dispatch();
    qd_peer_lines().settle();
    session_->clear_failed_invitation();
    form_->apply_start_state(session_->get_member(session_->get_local_id()) != nullptr);
    draw_levels();
    return result;
}

void MainWindowMainWindow::draw_levels()
{
    const QD_Clock::Time now = QD_Clock::real().now();
    if (now - levels_drawn_ < LEVELS_EVERY || !theApplication->takes_more())
        return;
    levels_drawn_ = now;
    audio_->show_levels();
    form_->updateLevels();
}

void MainWindowMainWindow::reset()
{
    session_->reset();
    form_->reset(nullptr, nullptr);
}

void MainWindowMainWindow::open_call_dialog()
{
    if (call_window_ == nullptr)
        call_window_ = new CallWindowMainWindow(&call_window_);
    call_window_->show();
}

void MainWindowMainWindow::playVideo() { video_->play(); }

void MainWindowMainWindow::stopVideo() { video_->stop(); }

void MainWindowMainWindow::playAudio() { audio_->play(); }

void MainWindowMainWindow::stopAudio() { audio_->stop(); }

void MainWindowMainWindow::updateOptions(_options* options)
{
    audio_->update_options(options);
    video_->update_options(options);
}

void MainWindowMainWindow::setMicCutoffLevel(int level)
{
    _options* options = session_->get_options();
    options->mic_cutoff = level;
    audio_->update_options(options);
}

void MainWindowMainWindow::callCallback(Widget, XtPointer self, XtPointer)
{
    window(self)->open_call_dialog();
}

void MainWindowMainWindow::quitCallback(Widget, XtPointer self, XtPointer) { window(self)->quit(); }

void MainWindowMainWindow::resetCallback(Widget, XtPointer self, XtPointer)
{
    window(self)->reset();
}

void MainWindowMainWindow::optionsCallback(Widget w, XtPointer self, XtPointer call)
{
    window(self)->form_->options(w, call);
}

void MainWindowMainWindow::audioPanelCallback(Widget w, XtPointer self, XtPointer call)
{
    window(self)->form_->audioPanel(w, call);
}

void MainWindowMainWindow::statisticsCallback(Widget w, XtPointer self, XtPointer call)
{
    window(self)->form_->statistics(w, call);
}

void MainWindowMainWindow::chatCallback(Widget w, XtPointer self, XtPointer call)
{
    window(self)->form_->chat(w, call);
}

void MainWindowMainWindow::confCallback(Widget w, XtPointer self, XtPointer call)
{
    window(self)->form_->conf(w, call);
}

void MainWindowMainWindow::overviewCallback(Widget w, XtPointer self, XtPointer call)
{
    window(self)->form_->overview(w, call);
}

void MainWindowMainWindow::usersCallback(Widget w, XtPointer self, XtPointer call)
{
    window(self)->form_->users(w, call);
}
