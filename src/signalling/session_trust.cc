// The session controller's part in trust: what a stream may ask for, and which
// members keep which others out. docs/strangers.md says it as a whole.
#include "platform/net/host_address.h"
#include "platform/net/sock_library.h"
#include "signalling/session_control.h"

#include <algorithm>
#include <arpa/inet.h>

namespace {

bool is_sound_address(uint32_t host)
{
    const uint32_t own = ntohl(SOCK_Library::getlocalhostid());
    const uint32_t address = ntohl(host);
    return address != own && qd_host_trouble(address).empty() && qd_on_one_side(address, own)
        && qd_is_reachable(own, address);
}

}

bool QD_Session_Control::uses(const SOCK_Stream* s) const
{
    return has_called(s) || is_called_by(s)
        || std::any_of(members_.begin(), members_.end(),
            [s](const auto& entry) { return entry.second.get_stream() == s; });
}

bool QD_Session_Control::has_called(const SOCK_Stream* s) const
{
    return new_member_ && new_member_->get_stream() == s;
}

bool QD_Session_Control::is_called_by(const SOCK_Stream* s) const
{
    return inviting_member_ && inviting_member_->get_stream() == s;
}

bool QD_Session_Control::speaks_for(const SOCK_Stream* s, int id)
{
    const QD_Member* const member = get_member(id);
    if (member == nullptr || id == local_id_ || member->get_origin() == QD_Member::BY_FRAMEWORK)
        return false;
    return member->get_stream() == s
        || (s->get_peer_host() != 0 && s->get_peer_host() == member->get_host());
}

bool QD_Session_Control::is_of_framework(int id)
{
    const QD_Member* const member = get_member(id);
    return member != nullptr && member->get_origin() == QD_Member::BY_FRAMEWORK;
}

// Of two members at one address, for whom each packet would go there twice, the one of less
// weight is not there. The framework alone may want it otherwise.
bool QD_Session_Control::has_place(int id, uint32_t host, QD_Member::Origin origin)
{
    if (origin == QD_Member::BY_FRAMEWORK)
        return true;
    return !is_of_framework(id)
        && std::none_of(members_.begin(), members_.end(), [&](const auto& entry) {
               const QD_Member& other = entry.second;
               return entry.first != id && other.get_host() == host
                   && (other.get_origin() > origin || origin == QD_Member::BY_STREAM);
           });
}

void QD_Session_Control::make_place(int id, uint32_t host)
{
    std::vector<int> leaving;
    for (const auto& [other, member] : members_)
        if (other != id && member.get_host() == host
            && member.get_origin() != QD_Member::BY_FRAMEWORK)
            leaving.push_back(other);
    for (int other : leaving)
        send_away(other);
}

void QD_Session_Control::send_away(int id)
{
    char text[QD_Member::STRING_SIZE];
    get_member(id)->get_string(text);
    if (form_ != nullptr)
        form_->delUserFromList(text);
    delete_member(id);
}

bool QD_Session_Control::may_announce(const QD_Member& m)
{
    const int id = m.get_id();
    const auto announced = std::count_if(members_.begin(), members_.end(), [&](const auto& entry) {
        return entry.first != id && entry.second.get_origin() == QD_Member::BY_STREAM;
    });
    return announced < MAX_ANNOUNCED && id != local_id_ && is_sound_address(m.get_host())
        && (get_member(id) == nullptr || speaks_for(m.get_stream(), id));
}

bool QD_Session_Control::may_invite(const QD_Member& m) const
{
    return status_ == IDLE && is_sound_address(m.get_host());
}

std::vector<_participant> QD_Session_Control::admissible(std::vector<_participant> list)
{
    _participant self = list.back(); // the newcomer, which is the last one: us
    list.pop_back();
    self.host = SOCK_Library::getlocalhostid();
    std::vector<_participant> in;
    for (const _participant& one : list) {
        const auto repeats = [&](const _participant& other) {
            return other.handle == one.handle || other.host == one.host;
        };
        if (one.handle != self.handle && is_sound_address(one.host)
            && std::none_of(in.begin(), in.end(), repeats)
            && has_place(one.handle, one.host, QD_Member::BY_CALL))
            in.push_back(one);
    }
    if (has_place(self.handle, self.host, QD_Member::BY_CALL))
        in.push_back(self);
    return in;
}
