// What the main window shows of the conference, and what its controls do.
#pragma once

#include "signalling/views.h"
#include "ui/main_form_ui.h"
#include "ui/stat_window.h"
#include "ui/text_list.h"

#include <atomic>

/// The session controller's display. All of it runs on the user-interface
/// thread but setSpeakerLevel() and setMicLevel(). With the resource
/// "showStatistics" (class "ShowStatistics") true the statistics window is
/// shown from the start.
class MainForm : public MainFormUI, public QD_Main_View {
public:
    /// Makes the statistics window, too; holds the session controller only
    /// while it is used.
    MainForm(const char* name, Widget parent);

    /// Takes the statistics window and the options windows along.
    ~MainForm() override;
    const char* className() override { return "MainForm"; }

    /// The media operations behind the controls; not owned. Until it is set,
    /// the controls of the media do nothing.
    void setParent(QD_Media_Control* parent) { _parent = parent; }

    void setStatus(const char* text) override;
    void addUserToList(const char* text) override;
    void delUserFromList(const char* text) override;
    void activateButtons(char on) override;
    void chatMessage(QD_Member* from, int kind, const char* text, int len) override;
    void setSpeakerLevel(int level) override;
    void setMicLevel(int level) override;
    StatWindowMainWindow* getStatWnd() override { return _statistics; }

    /// To be called again and again: once the local member is known, a Camera
    /// toggle that is set by its resource ("*toggle.set") starts the video.
    void apply_start_state(bool local_known);

    /// Draws the levels stored last; a meter without one stays dark.
    void updateLevels();

    /// The main window's menu entries.
    virtual void options(Widget, XtPointer);
    virtual void statistics(Widget, XtPointer);
    virtual void reset(Widget, XtPointer);
    virtual void audioPanel(Widget, XtPointer);
    virtual void chat(Widget, XtPointer);
    virtual void conf(Widget, XtPointer);
    virtual void overview(Widget, XtPointer);
    virtual void users(Widget, XtPointer);

protected:
    void accept(Widget, XtPointer) override;
    void reject(Widget, XtPointer) override;
    void call(Widget, XtPointer) override;
    void camera(Widget, XtPointer) override;
    void talk(Widget, XtPointer) override;
    void manualSwitch(Widget, XtPointer) override;
    void autoSwitch(Widget, XtPointer) override;
    void micScale(Widget, XtPointer) override;
    void userSelected(Widget, XtPointer) override;

private:
    ::_options* _options = nullptr; // the session controller's
    StatWindowMainWindow* _statistics = nullptr;
    QD_Media_Control* _parent = nullptr;
    bool start_camera_; // the toggle is set, and nothing has come of it yet

    // Meter values, 110 (silence) to 0; nothing to draw until one was stored.
    std::atomic<int32_t> speaker_value_ = 0;
    std::atomic<int32_t> mic_value_ = 0;
    std::atomic<bool> speaker_known_ = false;
    std::atomic<bool> mic_known_ = false;

    QD_Text_List users_;
};
