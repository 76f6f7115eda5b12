// The session controller's part in calls: invitations, answers and what members
// tell one another.
#include "platform/base/utf8.h"
#include "platform/net/sock_library.h"
#include "signalling/app_record.h"
#include "signalling/qd_message.h"
#include "signalling/session_control.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

std::string string_of(const QD_Member& member)
{
    char text[QD_Member::STRING_SIZE];
    member.get_string(text);
    return text;
}

// The same for a terminal: names come from other hosts.
std::string printable(const QD_Member& member) { return qd_printable(string_of(member)); }

QD_Message make_message(unsigned char tag)
{
    QD_Msg_Header header;
    header.set_tag(tag);
    return QD_Message(header);
}

// Gives the message an image as its body.
template <class IMAGE> void set_body(QD_Message* msg, const IMAGE& image)
{
    const size_t size = image.image_size();
    auto* body = new char[size];
    image.encode({reinterpret_cast<uint8_t*>(body), size});
    msg->set(body, static_cast<int>(size));
}

std::span<const uint8_t> bytes_of(const char* body, int size)
{
    return {reinterpret_cast<const uint8_t*>(body), static_cast<size_t>(std::max(size, 0))};
}

}

void QD_Session_Control::set_status(const std::string& text)
{
    if (form_ != nullptr)
        form_->setStatus(text.c_str());
}

void QD_Session_Control::list_user(const std::string& text)
{
    if (form_ != nullptr)
        form_->addUserToList(text.c_str());
}

void QD_Session_Control::send(QD_Member* to, unsigned char tag)
{
    QD_Message message = make_message(tag);
    to->send_msg(&message);
}

int QD_Session_Control::invite(const char* user_name, const char* host_name)
{
    if (!call_policy_.any())
        return -1;
    const QD_Clock& clock = QD_Clock::real();
    const auto end = clock.now() + std::chrono::milliseconds(SOCK_Connector::CONNECT_MS);
    if (status_ == INVITED || new_member_)
        return 0;
    if (status_ == IDLE)
        start_conference();
    const uint32_t host = SOCK_Library::gethostid(host_name);
    if (host == 0)
        return -1;

    new_member_ = std::make_unique<QD_Member>(user_name, host);
    QD_Member* const called = new_member_.get();
    // Finding the name has had its share of the second.
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - clock.now()).count();
    dial_({&called, 1}, reactor_, static_cast<int>(std::max<long>(left, 0)));
    if (called->get_stream() == nullptr) {
        no_print("QD_Session_Control::invite user not present\n");
        return -1;
    }
    QD_Message message = make_message(QD_Message::INVITE);
    fill_participants(&message);
    called->send_msg(&message);
    message.destroy();
    return 0;
}

// Whoever invites first is member 0.
void QD_Session_Control::start_conference()
{
    QD_Member me(options_.local_name, SOCK_Library::getlocalhostid());
    me.set_id(0);
    if (admit(&me, QD_Member::BY_CALL, true)) // else the framework has named us
        list_user(string_of(me));
    last_id_ = 0;
    status_ = IN_SESSION;
}

void QD_Session_Control::clear_failed_invitation()
{
    if (new_member_ && new_member_->get_stream() == nullptr)
        new_member_.reset();
}

void QD_Session_Control::invited(QD_Member* m)
{
    std::unique_ptr<QD_Member> inviting(m);
    if (!may_invite(*m)) {
        send(m, QD_Message::REJECT);
        return;
    }
    inviting->fix_string();
    inviting_member_ = std::move(inviting);
    status_ = INVITED;
    set_status("You are INVITED by " + string_of(*inviting_member_));
    if (form_ != nullptr)
        form_->activateButtons(1);
    if (options_.auto_accept == 0)
        return;
    accept_invitation();
    if (form_ != nullptr)
        form_->activateButtons(0);
}

int QD_Session_Control::accept_invitation()
{
    if (status_ != INVITED)
        return -1;
    send(inviting_member_.get(), QD_Message::ACCEPT);
    status_ = ACCEPTED;
    return 0;
}

int QD_Session_Control::reject_invitation()
{
    if (status_ != INVITED)
        return -1;
    send(inviting_member_.get(), QD_Message::REJECT);
    inviting_member_.reset();
    status_ = IDLE;
    return 0;
}

int QD_Session_Control::accepted(const char* name, uint32_t /*host*/)
{
    if (!new_member_)
        return -1;
    no_print("QD_Session_Control::accepted\n");
    const std::unique_ptr<QD_Member> member = std::move(new_member_);
    member->set_name(name);
    if (const std::string why = place_trouble(*member); !why.empty()) {
        printf(
            "QD_Session_Control: %s is not let in: %s\n", printable(*member).c_str(), why.c_str());
        member->close(); // which shows that we have left
        return -1;
    }
    do
        ++last_id_;
    while (is_of_framework(last_id_));
    member->set_id(last_id_);

    // Told before the newcomer is among them: nobody is told of themselves.
    _participant newcomer;
    member->get_participant(&newcomer);
    QD_Message announcement = make_message(QD_Message::NEW_MEMBER);
    set_body(&announcement, newcomer);
    send_to_all(&announcement);
    announcement.destroy();

    admit(member.get(), QD_Member::BY_CALL);
    QD_Message confirmation = make_message(QD_Message::CONFIRM);
    fill_participants(&confirmation);
    member->send_msg(&confirmation);
    confirmation.destroy();
    set_status(string_of(*member) + " accepted invitation");
    list_user(string_of(*member));
    return 0;
}

std::string QD_Session_Control::place_trouble(const QD_Member& newcomer)
{
    if (members_.size() >= QD_Participant_List::MAX_MEMBERS)
        return "the conference has " + std::to_string(members_.size()) + " members";
    for (const auto& [id, member] : members_)
        if (member.get_host() == newcomer.get_host() && is_of_framework(id))
            return "it is there already";
    return "";
}

int QD_Session_Control::rejected(const char* /*name*/, uint32_t /*host*/)
{
    if (!new_member_)
        return -1;
    set_status(string_of(*new_member_) + " rejected invitation");
    new_member_->close(); // it was for this call alone
    new_member_.reset();
    return 0;
}

int QD_Session_Control::confirmed(const char* body, int size)
{
    const auto list = QD_Participant_List::decode(bytes_of(body, size));
    if (status_ != ACCEPTED || !list || list->members.empty())
        return -1;
    const int own_id = list->members.back().handle; // the newcomer is the last one
    const uint32_t inviting_host = inviting_member_->get_host();
    no_print("Session confirmed, %d members, local id %d, inviting id %d\n",
        static_cast<int>(list->members.size()), own_id, inviting_member_->get_id());

    const std::vector<_participant> listed = admissible(list->members);
    std::vector<std::unique_ptr<QD_Member>> members; // null for the inviting one
    std::vector<QD_Member*> others;
    for (const _participant& one : listed) {
        members.push_back(nullptr);
        if (one.host == inviting_host)
            continue;
        members.back() = std::make_unique<QD_Member>(nullptr, one.handle, one.user, one.host);
        if (one.handle != own_id)
            others.push_back(members.back().get());
    }
    dial_(others, reactor_, SOCK_Connector::CONNECT_MS);

    for (size_t i = 0; i < members.size(); ++i) {
        QD_Member* const member = members[i] ? members[i].get() : inviting_member_.get();
        member->set_id(listed[i].handle);
        member->fix_string();
        const bool local = member->get_id() == own_id;
        if (members[i] && !local) {
            send(member, QD_Message::CONNECT);
            printf("Connect: %s, id=%d\n", printable(*member).c_str(), member->get_id());
        }
        admit(member, QD_Member::BY_CALL, local);
        list_user(string_of(*member));
    }
    status_ = IN_SESSION;
    inviting_member_.reset();
    return 0;
}

int QD_Session_Control::connect(int id, SOCK_Stream* s)
{
    QD_Member* const member = get_member(id);
    if (member == nullptr)
        return -1;
    member->set_stream(s);
    return 0;
}

int QD_Session_Control::connection_closed(SOCK_Stream* s)
{
    if (s == nullptr)
        return -1; // which would match a member without a stream
    const auto found = std::find_if(members_.begin(), members_.end(),
        [s](const auto& entry) { return entry.second.get_stream() == s; });
    if (found != members_.end()) {
        const std::string text = string_of(found->second);
        std::map<int, QD_Member>::node_type leaving; // with its window, which closes after the lock
        {
            QD_Session_Hold hold(this);
            leaving = members_.extract(found);
        }
        publish_roster();
        set_status("User left");
        if (form_ != nullptr) {
            form_->delUserFromList(text.c_str());
            stat_view()->delFromUsersList(text.c_str()); // if a stream has announced it
        }
        return 0;
    }
    if (is_called_by(s)) {
        inviting_user_left();
        return 0;
    }
    if (has_called(s)) {
        invited_user_left();
        return 0;
    }
    return -1;
}

void QD_Session_Control::inviting_user_left()
{
    inviting_member_.reset();
    status_ = IDLE;
    set_status("Inviting user left");
    if (form_ != nullptr)
        form_->activateButtons(0);
}

void QD_Session_Control::invited_user_left()
{
    new_member_.reset();
    set_status("Invited user left");
}

void QD_Session_Control::stream_gone(SOCK_Stream* s)
{
    QD_Session_Control* session = nullptr;
    {
        QD_Lock hold(instance_mutex_);
        session = session_control_;
    }
    if (session != nullptr)
        session->forget_stream(s);
}

// One stream may have come to stand for several members and for an invitation.
void QD_Session_Control::forget_stream(const SOCK_Stream* s)
{
    std::vector<int> leaving;
    for (auto& [id, member] : members_)
        if (member.get_stream() == s) {
            member.set_stream(nullptr);
            if (member.get_origin() == QD_Member::BY_STREAM)
                leaving.push_back(id);
        }
    for (int id : leaving)
        send_away(id);
    if (is_called_by(s))
        inviting_user_left();
    if (has_called(s))
        invited_user_left();
}

void QD_Session_Control::send_to_all(QD_Message* msg)
{
    for (auto& [id, member] : members_) {
        printf("%s, id=%d\n", printable(member).c_str(), id);
        if (id != local_id_)
            member.send_msg(msg);
    }
}

void QD_Session_Control::fill_participants(QD_Message* msg)
{
    QD_Participant_List list;
    list.sender_id = local_id_;
    for (const auto& [id, member] : members_)
        if (list.members.size() < QD_Participant_List::MAX_MEMBERS)
            member.get_participant(&list.members.emplace_back());
    set_body(msg, list);
}

int QD_Session_Control::send_to_app(int app, int kind, const char* data, int len)
{
    const QD_App_Record record {app, static_cast<int16_t>(kind), bytes_of(data, len)};
    if (len < 0 || record.image_size() > QD_Message::MAX_BODY)
        return -1;
    QD_Message message = make_message(QD_Message::APP_MESSAGE);
    set_body(&message, record);
    send_to_all(&message);
    message.destroy();
    return 0;
}

int QD_Session_Control::app_message(int id, const char* body, int size)
{
    const auto record = QD_App_Record::decode(bytes_of(body, size));
    QD_Member* const member = get_member(id);
    if (!record || record->app != QD_App_Record::TEXT_CHAT || member == nullptr)
        return -1;
    if (form_ != nullptr)
        form_->chatMessage(member, record->kind, reinterpret_cast<const char*>(record->data.data()),
            static_cast<int>(record->data.size()));
    return 0;
}
