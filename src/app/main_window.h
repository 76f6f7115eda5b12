// The main window, which owns the system and tears it down.
#pragma once

#include "audio/audio_app.h"
#include "framework/orvik_control.h"
#include "platform/net/reactor.h"
#include "platform/vk/window.h"
#include "signalling/listener.h"
#include "signalling/session_control.h"
#include "ui/call_window.h"
#include "ui/display_factory.h"
#include "ui/main_form.h"
#include "video/video_app.h"

#include <memory>

/// Main form, session controller reference, framework control, audio and video
/// application. User-interface thread.
class MainWindowMainWindow : public VkWindow, public QD_Media_Control {
public:
    /// What the end of the process may take, whatever hangs: the framework waits 10 s.
    static constexpr int END_SECONDS = 8;

    /// Builds window and system; what is left of the command line goes to the
    /// framework control, which ends the process if it cannot register.
    /// `wake_fd` ends the waits of handle_events() when readable.
    MainWindowMainWindow(const char* name, char** argv, int argc, int wake_fd);

    /// Closes audio, then video, and takes the rest down.
    ~MainWindowMainWindow() override;

    /// The same, but for the framework control, which stays; then the process ends with status 0.
    bool okToQuit() override;

    const char* className() override { return "MainWindowMainWindow"; }

    /// Watches the member streams.
    Reactor* getReactor() { return &reactor_; }

    /// One pass of the control loop; see QD_Orvik_Control::handle_events.
    int handle_events(int wait_ms);

    // What menu entries, built or added by others, and key bindings call.
    static void quitCallback(Widget w, XtPointer self, XtPointer call);
    static void resetCallback(Widget w, XtPointer self, XtPointer call);
    static void optionsCallback(Widget w, XtPointer self, XtPointer call);
    static void audioPanelCallback(Widget w, XtPointer self, XtPointer call);
    static void statisticsCallback(Widget w, XtPointer self, XtPointer call);
    static void chatCallback(Widget w, XtPointer self, XtPointer call);
    static void confCallback(Widget w, XtPointer self, XtPointer call);
    static void overviewCallback(Widget w, XtPointer self, XtPointer call);
    static void usersCallback(Widget w, XtPointer self, XtPointer call);

    void playVideo() override;
    void stopVideo() override;
    void playAudio() override;
    void stopAudio() override;
    void updateOptions(_options* options) override;
    void setMicCutoffLevel(int level) override;

private:
    static void callCallback(Widget, XtPointer self, XtPointer);
    void build_menus();
    void close_media();
    void draw_levels();

    [[noreturn]] void quit();
    void reset();
    void open_call_dialog();

    Reactor reactor_;
    QD_Listener listener_ {&reactor_};
    MainForm* form_;                              // the view, until close_media()
    CallWindowMainWindow* call_window_ = nullptr; // while there is one
    QD_Display_Windows displays_;                 // outlives the members
    QD_Session_Control* session_;
    std::unique_ptr<QD_Orvik_Control> framework_;
    std::unique_ptr<QD_AudioApp> audio_;
    std::unique_ptr<QD_VideoApp> video_;
    QD_Clock::Time levels_drawn_;
};
