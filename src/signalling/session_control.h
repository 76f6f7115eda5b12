// The one object that knows the conference: members, local user, options.
#pragma once

#include "platform/base/mutex.h"
#include "platform/base/semaphore.h"
#include "platform/base/wake.h"
#include "platform/net/reactor.h"
#include "signalling/call_policy.h"
#include "signalling/member.h"
#include "signalling/options.h"
#include "signalling/roster.h"
#include "signalling/views.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

/// A counted singleton: every use stands between instance() and destroy(), and
/// the last destroy() saves the options and deletes it.
///
/// Threads: the user-interface thread alone adds and removes members and calls
/// whatever is not marked otherwise. Other threads reach members only between
/// lock() and unlock(), or read the roster.
/// Locks: the session lock first, then a member's display semaphore or the
/// video codec semaphore. Neither is held for longer than copying a record or a
/// picture; no window, look-up or file is touched meanwhile.
class QD_Session_Control {
public:
    /// The local member's id before it is known.
    static constexpr int NO_LOCAL_ID = 255;

    /// Members there at a time that streams have announced.
    static constexpr int MAX_ANNOUNCED = 1000;

    /// The instance, made at the first call. Any thread.
    static QD_Session_Control* instance();
    /// Gives one instance() back. Any thread, but the last holder's is the user-interface thread.
    static void destroy();

    /// Has the options saved, too, when the process ends with holders left, from
    /// now on: a start that fails before this leaves the file alone.
    static void save_at_end();

    QD_Session_Control(const QD_Session_Control&) = delete;
    QD_Session_Control& operator=(const QD_Session_Control&) = delete;

    /// Who shows the session, and where member streams are watched. Not owned,
    /// and they outlive the session's use of them; null for none.
    void setGUI(QD_Media_Control* main_wnd, QD_Main_View* form);
    void set_display_factory(QD_Display_Factory* factory) { factory_ = factory; }
    void set_reactor(Reactor* reactor) { reactor_ = reactor; }
    Reactor* get_reactor() const { return reactor_; }
    QD_Main_View* getMainForm() const { return form_; }

    /// The local member's id. Any thread.
    int get_local_id() const { return local_id_; }

    /// All members by id, and one of them or null. With the session lock, or
    /// on the user-interface thread, which needs none.
    std::map<int, QD_Member>* get_member_list() { return &members_; }
    QD_Member* get_member(int id);

    /// The membership as it is now, never null. Any thread, at once.
    QD_Roster_Ptr get_roster() const;

    /// The options record, edited in place by the user-interface thread.
    _options* get_options() { return &options_; }

    /// Tells the media applications of changed options and saves them.
    void update_options();

    /// Reads and writes the options file. 0, or -1 if it could not be opened or read whole.
    int restore_options();
    int save_options() const;

    /// The session lock. Not recursive. Any thread.
    void lock() { sem_.wait(); }
    void unlock() { sem_.post(); }

    /// Raised at every request that a member has waiting for handle_member_events().
    const QD_Wake& get_wake() const { return wake_; }

    /// Takes a member in, in place of one with its id, numbers the joining and
    /// lists it in the statistics. A member at this machine's address is the
    /// local one. One without a stream is the framework's: others at its address
    /// leave, and streams have no say about it. Deletes m; -1 if that is null,
    /// or has a stream that may not announce it. Never with the lock held.
    int new_member(QD_Member* m);

    /// Removes a member and its window. 0, or -1 if there is none with that id.
    /// Never with the lock held.
    int delete_member(int id);

    /// Lets every member serve one pending request.
    void handle_member_events();

    /// Who may call us, and whether we call others: as the environment said at the start.
    const QD_Call_Policy& call_policy() const { return call_policy_; }

    /// Calls a host, by name or dotted address, into the conference; begins one
    /// if there is none. Holds the caller for a second at most. Returns 0, also
    /// when an invitation is unanswered and nothing was done; -1 if the host
    /// cannot be reached, or there are no calls.
    int invite(const char* user_name, const char* host_name);

    /// Forgets an invitation whose stream could not be opened, so that the next
    /// call is not taken for a second one. For each pass of the control loop.
    void clear_failed_invitation();

    /// Answers to an invitation: -1 unless one is pending.
    int accept_invitation();
    int reject_invitation();

    /// Forget all members; quit() closes their streams as well.
    void quit();
    void reset();

    /// Sends `len` bytes of application data to all other members. Returns 0,
    /// or -1 if that is fewer than none or more than a message holds.
    int send_to_app(int app, int kind, const char* data, int len);

    /// Whether the stream serves a member or a call; the one that we have called
    /// on, or been called on; one that may say what becomes of a member: its own
    /// or one from its host, for a member that is neither the framework's nor us.
    bool uses(const SOCK_Stream* s) const;
    bool has_called(const SOCK_Stream* s) const;
    bool is_called_by(const SOCK_Stream* s) const;
    bool speaks_for(const SOCK_Stream* s, int id);

    /// What messages from other members ask for; see QD_Message. They return 0,
    /// or -1 with nothing changed. `m` is taken over, bodies are not kept.
    void invited(QD_Member* m);
    int accepted(const char* name, uint32_t host);
    int rejected(const char* name, uint32_t host);
    int confirmed(const char* body, int size);
    int connect(int id, SOCK_Stream* s);
    int app_message(int id, const char* body, int size);

    /// A stream has ended: its member leaves, or its invitation lapses. -1 if
    /// nobody uses it.
    int connection_closed(SOCK_Stream* s);

    /// The stream is about to be destroyed: nobody keeps it, and the members
    /// that it alone has announced leave. Does nothing if there is no instance.
    static void stream_gone(SOCK_Stream* s);

    /// Prints a line for every member and sends the message to all but the local one.
    void send_to_all(QD_Message* msg);

    /// Gives the message the list of all members as its body, of no more than
    /// others take.
    void fill_participants(QD_Message* msg);

    /// Opens streams to members, as qd_connect_members does, which is the default.
    using Dial = std::function<void(std::span<QD_Member* const>, Reactor*, int milliseconds)>;
    void set_dial(Dial dial) { dial_ = std::move(dial); }

    /// Shows the figures of every member with that display string.
    void update_stat(const char* member_text);

    /// Refresh the figures if m is the selected member, at every 5th (audio)
    /// or 3rd (video) call.
    void update_audio_stat(QD_Member* m);
    void update_video_stat(QD_Member* m);

    /// Prints the member table, or each member's reception figures, on standard output.
    void print_status();
    void print_statistics();

private:
    QD_Session_Control();
    ~QD_Session_Control();

    bool is_selected(QD_Member* m) const;
    bool admit(QD_Member* m, QD_Member::Origin origin, bool local = false);
    bool is_of_framework(int id);
    bool has_place(int id, uint32_t host, QD_Member::Origin origin);
    void make_place(int id, uint32_t host);
    void send_away(int id);
    bool may_announce(const QD_Member& m);
    bool may_invite(const QD_Member& m) const;
    std::vector<_participant> admissible(std::vector<_participant> list);
    std::string place_trouble(const QD_Member& newcomer);
    void forget_members(bool close_streams);
    void start_conference();
    void forget_stream(const SOCK_Stream* s);
    void inviting_user_left();
    void invited_user_left();
    void send(QD_Member* to, unsigned char tag);
    void set_status(const std::string& text);
    void list_user(const std::string& text);
    void publish_roster();
    QD_Stat_View* stat_view() const;

    static QD_Mutex instance_mutex_;
    static int reference_no_ QD_GUARDED_BY(instance_mutex_);
    static QD_Session_Control* session_control_ QD_GUARDED_BY(instance_mutex_);

    /// What the session is about; see the states of an invitation.
    enum State : int32_t { IDLE = 0, INVITED = 1, ACCEPTED = 2, IN_SESSION = 3 };

    // Changed by the user-interface thread under sem_; read by it without.
    std::map<int, QD_Member> members_;
    State status_ = IDLE;
    std::unique_ptr<QD_Member> inviting_member_; // who has called us, while INVITED or ACCEPTED
    std::unique_ptr<QD_Member> new_member_;      // whom we have called, until the answer
    std::atomic<int> local_id_ = NO_LOCAL_ID;
    int last_id_ = -1;     // that was given to a member we called
    int internal_id_ = -1; // the number of the last joining
    const QD_Call_Policy call_policy_ = QD_Call_Policy::from_environment();
    Dial dial_;
    Reactor* reactor_ = nullptr;
    _options options_;
    QD_Semaphore sem_ {1};
    QD_Main_View* form_ = nullptr;
    QD_Media_Control* main_wnd_ = nullptr;
    QD_Display_Factory* factory_ = nullptr;
    QD_Wake wake_ {QD_Wake::EACH};

    mutable QD_Mutex roster_mutex_; // for the pointer alone
    QD_Roster_Ptr roster_ QD_GUARDED_BY(roster_mutex_);
};

/// Holds a reference for the length of a block.
class QD_Session_Ref {
public:
    QD_Session_Ref() : session_(QD_Session_Control::instance()) {}
    ~QD_Session_Ref() { QD_Session_Control::destroy(); }
    QD_Session_Ref(const QD_Session_Ref&) = delete;
    QD_Session_Ref& operator=(const QD_Session_Ref&) = delete;
    QD_Session_Control* operator->() const { return session_; }
    QD_Session_Control* get() const { return session_; }

private:
    QD_Session_Control* session_;
};

/// Holds the session lock for the length of a block.
class QD_Session_Hold {
public:
    explicit QD_Session_Hold(QD_Session_Control* session) : session_(session) { session_->lock(); }
    ~QD_Session_Hold() { session_->unlock(); }
    QD_Session_Hold(const QD_Session_Hold&) = delete;
    QD_Session_Hold& operator=(const QD_Session_Hold&) = delete;

private:
    QD_Session_Control* session_;
};
