// One member of the conference.
#pragma once

#include "media/base/user_data.h"
#include "platform/base/semaphore.h"
#include "platform/base/wake.h"
#include "platform/net/reactor.h"
#include "platform/net/sock_stream.h"
#include "signalling/participant.h"
#include "signalling/views.h"

#include <cstdint>
#include <memory>

class QD_Message;

/// Who a member is, how its media arrive, and its video window with the
/// requests that media threads post for it.
///
/// The session controller keeps members by value, under its lock; whoever holds
/// a pointer to one holds that lock or is the user-interface thread, which alone
/// adds and removes members. Identity and display string do not change between
/// joining and leaving. Statistics are read and updated under the session lock.
class QD_Member {
public:
    static constexpr size_t NAME_SIZE = 20;    // with the end
    static constexpr size_t STRING_SIZE = 100; // likewise, for display strings
    static constexpr int PICTURE_SIZE = 38016; // bytes: planes Y 176 x 144, U and V 88 x 72

    QD_Member();

    /// A longer name is cut. `host` is in network byte order; the stream, null
    /// for none, is not owned.
    QD_Member(SOCK_Stream* stream, int id, const char* name, uint32_t host);
    QD_Member(const char* name, uint32_t host);

    /// A copy has neither window nor statistics nor requests; an assigned-to
    /// member keeps its window and statistics and drops its requests.
    explicit QD_Member(const QD_Member* other);
    QD_Member& operator=(const QD_Member& other);
    QD_Member(const QD_Member&) = delete;
    ~QD_Member();

    int get_id() const { return id_; }
    void set_id(int id) { id_ = id; }
    uint32_t get_host() const { return host_; }
    void set_name(const char* name);
    void get_name(char (&out)[NAME_SIZE]) const;
    SOCK_Stream* get_stream() const { return stream_; }
    void set_stream(SOCK_Stream* stream) { stream_ = stream; }

    /// The number of this joining; see QD_Session_Control::new_member.
    int get_internal_id() const { return internal_id_; }
    void set_internal_id(int id) { internal_id_ = id; }

    /// Who has brought the member in, the one of least weight first: see
    /// QD_Session_Control::new_member and calls.
    enum Origin { BY_STREAM, BY_CALL, BY_FRAMEWORK };
    Origin get_origin() const { return origin_; }
    void set_origin(Origin origin) { origin_ = origin; }

    /// Null until the first packet of that medium.
    const UserData* get_audio_data() const { return audio_data_.get(); }
    const UserData* get_video_data() const { return video_data_.get(); }

    /// Writes user name, "@" and host name (or dotted address), cut to fit. Returns 0.
    int get_string(char (&out)[STRING_SIZE]) const;

    /// Settles the display string: from here on it stays the same, also in copies.
    void fix_string();

    /// Who this is, as messages carry it. Returns 0.
    int get_participant(_participant* out) const;

    /// Opens a stream to the member's host, which the reactor then serves.
    /// Returns 0, or -1 without a stream, after at most a second.
    int connect(Reactor* reactor);

    /// Closes the stream if there is one; the pointer stays.
    void close();

    /// Sends a message if there is a stream; never waits. A stream that fails
    /// over it ends of itself.
    void send_msg(QD_Message* msg);

    /// Counts a packet of `len` payload bytes. Under the session lock.
    void update_audio_stat(const rtp_fix_header* hdr, int len);
    void update_video_stat(const rtp_fix_header* hdr, int len);

    /// What makes this member's windows, and what is raised at each request.
    /// Both outlive the member; without a factory requests have no effect.
    void set_display(QD_Display_Factory* factory, const QD_Wake* wake);

    /// Requests, from any thread that holds the session lock or is the
    /// user-interface thread. A picture (PICTURE_SIZE bytes, copied) overwrites
    /// one that still waits.
    void open_dpy_req();
    void close_dpy_req();
    void display_req(const char* picture);

    /// Serves one pending request: open before picture before close. Windows are
    /// slow, so neither the session lock nor the semaphore is held meanwhile.
    /// This and what follows: user-interface thread only.
    void handle_events();

    /// Returns 0, or -1 if the window is open already or cannot be had.
    int open_display();
    void close_display();

    /// Pictures drawn so far.
    int get_shown() const { return shown_; }

    /// Draws a picture. The first one after opening only prepares the window;
    /// without a window it opens one.
    void display(const char* picture);

private:
    enum Request { NONE, OPEN, PICTURE, CLOSE };

    Request take_request(std::unique_ptr<char[]>& picture);
    void copy_identity(const QD_Member& other);
    void clear_requests();
    void request(bool& waits, const char* picture = nullptr);
    void show_statistics();

    std::unique_ptr<QD_Display_View> dpy_win;
    int32_t display_on_ = 0; // copied along; no window looks at it
    int32_t id_ = 0;
    char name_[NAME_SIZE] = "";
    uint32_t host_ = 0;
    int32_t internal_id_ = 0;
    Origin origin_ = BY_FRAMEWORK;
    std::unique_ptr<UserData> audio_data_;
    std::unique_ptr<UserData> video_data_;
    SOCK_Stream* stream_ = nullptr;

    bool open_dpy_ = false;  // a request to open the window waits
    bool init_dpy_ = false;  // the window is open and not prepared for drawing
    bool close_dpy_ = false; // a request to close it waits
    bool display_ = false;   // a picture waits in frame_
    int shown_ = 0;
    std::unique_ptr<char[]> frame_; // had at the first picture
    QD_Semaphore sem_ {1};          // guards the requests, frame_ and video_data_

    char string_[STRING_SIZE] = ""; // "" until settled
    QD_Display_Factory* factory_ = nullptr;
    const QD_Wake* wake_ = nullptr;
};
