// What the session and the media ask of the user interface, and it of them.
//
// Implemented by the forms and windows; tests give fakes. Unless it says
// otherwise an operation is called on the user-interface thread only. Texts are
// UTF-8, perhaps with invalid bytes, and are copied.
#pragma once

#include <memory>

class QD_Member;
class UserData;
struct _options;

/// The list of participants and the figures of the selected one.
class QD_Stat_View {
public:
    virtual ~QD_Stat_View() = default;

    /// Appends a line.
    virtual void addToUsersList(const char* text) = 0;
    /// Removes the first line equal to `text`, if there is one.
    virtual void delFromUsersList(const char* text) = 0;

    /// Shows figures; the pointers are not kept. Null audio figures zero every
    /// field, null video figures leave them as they are.
    virtual void setAudioData(const UserData* figures) = 0;
    virtual void setVideoData(const UserData* figures) = 0;

    /// The selected line, "" when none is. Never null, valid until the next call.
    virtual const char* getSelectedPart() = 0;
};

/// The window around the statistics.
class QD_Stat_Window_View {
public:
    virtual ~QD_Stat_Window_View() = default;
    virtual QD_Stat_View* getStatForm() = 0;
};

/// The main form: status line, the list of people who called, meters.
class QD_Main_View {
public:
    virtual ~QD_Main_View() = default;
    virtual void setStatus(const char* text) = 0;
    /// The list of users: appends a line; removes the first equal line, if there is one.
    virtual void addUserToList(const char* text) = 0;
    virtual void delUserFromList(const char* text) = 0;
    virtual void activateButtons(char on) = 0;
    /// Application data of kind `kind` from a member, `len` bytes, not terminated.
    virtual void chatMessage(QD_Member* from, int kind, const char* text, int len) = 0;

    /// Stores a level, 0 (silence) to 32767, to be drawn later. Any thread.
    virtual void setSpeakerLevel(int level) = 0;
    virtual void setMicLevel(int level) = 0;

    virtual QD_Stat_Window_View* getStatWnd() = 0;
};

/// One member's video window. Destroying it closes it.
class QD_Display_View {
public:
    virtual ~QD_Display_View() = default;
    virtual void show() = 0;

    /// Prepares the window for drawing, once, before the first picture.
    virtual void init_surface() = 0;

    /// Draws one QCIF picture: 38016 bytes, planes Y 176 x 144, U and V 88 x 72.
    virtual void draw(const unsigned char* picture) = 0;

    /// The two texts under the picture; the caller passes the bit rate first.
    virtual void setStatistics(const char* first, const char* second) = 0;
};

/// Makes video windows.
class QD_Display_Factory {
public:
    virtual ~QD_Display_Factory() = default;
    /// A window named `title`, not shown yet. Never null.
    virtual std::unique_ptr<QD_Display_View> make_display(const char* title) = 0;
};

/// The media operations of the main window, for the forms and the session controller.
class QD_Media_Control {
public:
    virtual ~QD_Media_Control() = default;
    virtual void playVideo() = 0;
    virtual void stopVideo() = 0;
    virtual void playAudio() = 0;
    virtual void stopAudio() = 0;

    /// Tells audio, then video, of changed options. May write into them.
    virtual void updateOptions(_options* options) = 0;

    /// Stores the microphone cut-off, 0..99, in the options and tells audio alone.
    virtual void setMicCutoffLevel(int level) = 0;
};
