#include "signalling/session_control.h"

#include "platform/base/process_end.h"
#include "platform/base/utf8.h"
#include "platform/net/sock_library.h"
#include "signalling/connector.h"
#include "signalling/options_file.h"

#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

QD_Mutex QD_Session_Control::instance_mutex_;
int QD_Session_Control::reference_no_ = 0;
QD_Session_Control* QD_Session_Control::session_control_ = nullptr;

QD_Session_Control* QD_Session_Control::instance()
{
    QD_Lock hold(instance_mutex_);
    if (reference_no_ == 0)
        session_control_ = new QD_Session_Control;
    ++reference_no_;
    return session_control_;
}

void QD_Session_Control::destroy()
{
    const QD_Session_Control* last = nullptr;
    {
        QD_Lock hold(instance_mutex_);
        if (reference_no_ > 0 && --reference_no_ > 0)
            return;
        last = std::exchange(session_control_, nullptr);
    }
    // Without the mutex: with the members go their windows, and the display may be lost
    // on the way, which ends the process.
    delete last;
}

void QD_Session_Control::save_at_end()
{
    qd_save_at_end([] {
        QD_Lock hold(instance_mutex_);
        if (session_control_ != nullptr)
            session_control_->save_options();
    });
}

QD_Session_Control::QD_Session_Control() :
    dial_(qd_connect_members),
    roster_(std::make_shared<QD_Roster>())
{
    publish_roster();
    if (restore_options() == -1)
        options_ = _options();
}

QD_Session_Control::~QD_Session_Control() { save_options(); }

void QD_Session_Control::setGUI(QD_Media_Control* main_wnd, QD_Main_View* form)
{
    main_wnd_ = main_wnd;
    form_ = form;
}

QD_Member* QD_Session_Control::get_member(int id)
{
    const auto found = members_.find(id);
    return found == members_.end() ? nullptr : &found->second;
}

QD_Roster_Ptr QD_Session_Control::get_roster() const
{
    QD_Lock hold(roster_mutex_);
    return roster_;
}

void QD_Session_Control::publish_roster()
{
    auto fresh = std::make_shared<QD_Roster>();
    fresh->local_id = local_id_;
    for (const auto& [id, member] : members_)
        fresh->entries.push_back({id, member.get_internal_id(), member.get_host()});
    QD_Roster_Ptr next = std::move(fresh);
    QD_Lock hold(roster_mutex_);
    roster_.swap(next); // the old one goes after the lock
}

int QD_Session_Control::restore_options() { return qd_read_options_file(&options_); }

int QD_Session_Control::save_options() const { return qd_write_options_file(options_); }

void QD_Session_Control::update_options()
{
    if (main_wnd_ != nullptr)
        main_wnd_->updateOptions(&options_);
    save_options();
}

QD_Stat_View* QD_Session_Control::stat_view() const
{
    return form_ == nullptr ? nullptr : form_->getStatWnd()->getStatForm();
}

// Every way into the map ends here: the copy there is numbered, keeps its
// string, can be shown, and is in the roster. Returns whether there is a place.
bool QD_Session_Control::admit(QD_Member* m, QD_Member::Origin origin, bool local)
{
    if (!has_place(m->get_id(), m->get_host(), origin))
        return false;
    make_place(m->get_id(), m->get_host());
    m->set_origin(origin);
    m->fix_string();
    m->set_display(factory_, &wake_);
    m->set_internal_id(++internal_id_);
    {
        QD_Session_Hold hold(this);
        members_[m->get_id()] = *m;
        if (local)
            local_id_ = m->get_id();
    }
    publish_roster();
    return true;
}

int QD_Session_Control::new_member(QD_Member* m)
{
    const std::unique_ptr<QD_Member> owned(m);
    const bool by_stream = m != nullptr && m->get_stream() != nullptr;
    if (m == nullptr || (by_stream && !may_announce(*m)))
        return -1;
    auto origin = by_stream ? QD_Member::BY_STREAM : QD_Member::BY_FRAMEWORK;
    std::string renewed; // its line in the statistics is not to be there twice
    if (const QD_Member* known = get_member(m->get_id()); by_stream && known != nullptr) {
        char text[QD_Member::STRING_SIZE];
        known->get_string(text);
        origin = known->get_origin();
        renewed = text;
    }
    if (!admit(m, origin, m->get_host() == SOCK_Library::getlocalhostid()))
        return -1;
    if (form_ != nullptr) {
        char text[QD_Member::STRING_SIZE];
        m->get_string(text);
        form_->setStatus("New user joined");
        if (!renewed.empty())
            stat_view()->delFromUsersList(renewed.c_str());
        stat_view()->addToUsersList(text);
    }
    fflush(stdout);
    return 0;
}

int QD_Session_Control::delete_member(int id)
{
    QD_Member* member = get_member(id);
    if (member == nullptr) {
        fflush(stdout);
        return -1;
    }
    char text[QD_Member::STRING_SIZE];
    member->get_string(text);
    member->close_display();
    {
        QD_Session_Hold hold(this);
        members_.erase(id);
    }
    publish_roster();
    if (form_ != nullptr) {
        form_->setStatus("User left");
        stat_view()->delFromUsersList(text);
    }
    fflush(stdout);
    return 0;
}

// Without the session lock: this thread alone changes the map, and a display that
// stalls must not silence anybody.
void QD_Session_Control::handle_member_events()
{
    for (auto& [id, member] : members_)
        member.handle_events();
}

void QD_Session_Control::quit() { forget_members(true); }

void QD_Session_Control::reset() { forget_members(false); }

void QD_Session_Control::forget_members(bool close_streams)
{
    if (close_streams)
        for (auto& [id, member] : members_)
            member.close();
    std::map<int, QD_Member> leaving; // with their windows, which close after the lock
    {
        QD_Session_Hold hold(this);
        leaving.swap(members_);
    }
    status_ = IDLE;
    publish_roster();
}

namespace {

/// A member's figures as they are at one moment; the media threads go on counting.
class Snapshot {
public:
    Snapshot(QD_Session_Control* session, const QD_Member& member,
        const UserData* (QD_Member::*figures)() const)
    {
        QD_Session_Hold hold(session);
        if (const UserData* now = (member.*figures)())
            copy_ = *now;
    }
    const UserData* get() const { return copy_ ? &*copy_ : nullptr; }

private:
    std::optional<UserData> copy_;
};

}

void QD_Session_Control::update_stat(const char* member_text)
{
    for (auto& [id, member] : members_) {
        char text[QD_Member::STRING_SIZE];
        member.get_string(text);
        if (strcmp(text, member_text) != 0 || form_ == nullptr)
            continue;
        stat_view()->setAudioData(Snapshot(this, member, &QD_Member::get_audio_data).get());
        stat_view()->setVideoData(Snapshot(this, member, &QD_Member::get_video_data).get());
    }
}

bool QD_Session_Control::is_selected(QD_Member* m) const
{
    if (form_ == nullptr)
        return false;
    char text[QD_Member::STRING_SIZE];
    m->get_string(text);
    return strcmp(text, stat_view()->getSelectedPart()) == 0;
}

void QD_Session_Control::update_audio_stat(QD_Member* m)
{
    static unsigned calls = 0; // for all members together
    if (!is_selected(m) || calls++ % 5 != 0)
        return;
    stat_view()->setAudioData(Snapshot(this, *m, &QD_Member::get_audio_data).get());
}

void QD_Session_Control::update_video_stat(QD_Member* m)
{
    static unsigned calls = 0; // for all members together
    if (!is_selected(m) || calls++ % 3 != 0)
        return;
    stat_view()->setVideoData(Snapshot(this, *m, &QD_Member::get_video_data).get());
}

void QD_Session_Control::print_status()
{
    printf("QD_Session Status\n---------------------\n");
    printf("\tLocal id: %d\n", local_id_.load());
    for (const auto& [id, member] : members_) {
        char text[QD_Member::STRING_SIZE];
        member.get_string(text);
        printf("Member: id %d, %s, internal id %d\n", id, qd_printable(text).c_str(),
            member.get_internal_id());
    }
    fflush(stdout);
}

void QD_Session_Control::print_statistics()
{
    for (const auto& [id, member] : members_) {
        char text[QD_Member::STRING_SIZE];
        member.get_string(text);
        const auto print = [&, id = id](const char* medium, const UserData* figures) {
            printf("QD_Session_Control: %s %s, id=%d: received %d, lost %d, late %d", medium,
                qd_printable(text).c_str(), id, figures->frames_received, figures->frames_lost,
                figures->frames_late);
        };
        const Snapshot audio(this, member, &QD_Member::get_audio_data);
        const Snapshot video(this, member, &QD_Member::get_video_data);
        if (audio.get() != nullptr) {
            print("audio", audio.get());
            printf("\n");
        }
        if (video.get() != nullptr) {
            print("video", video.get());
            printf(", shown %d\n", member.get_shown());
        }
    }
    fflush(stdout);
}
