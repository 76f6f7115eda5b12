#include "signalling/participant.h"

#include "platform/base/bytes.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdio>
#include <cstring>

namespace {

constexpr size_t USER_AT = 4;
constexpr size_t HOST_AT = 24;
constexpr size_t COUNT_AT = 4;
constexpr size_t MEMBERS_AT = 8;

}

void _participant::set_user(const char* name) { snprintf(user, sizeof user, "%s", name); }

void _participant::encode(std::span<uint8_t> out) const
{
    std::fill(out.begin(), out.end(), uint8_t {0});
    qd_put_u32(&out[0], static_cast<uint32_t>(handle));
    memcpy(&out[USER_AT], user, strnlen(user, USER_SIZE - 1));
    qd_put_u32(&out[HOST_AT], ntohl(host));
}

_participant _participant::decode(std::span<const uint8_t, IMAGE_SIZE> in)
{
    _participant one;
    one.handle = static_cast<int32_t>(qd_get_u32(&in[0]));
    const auto* name = reinterpret_cast<const char*>(&in[USER_AT]);
    memcpy(one.user, name, strnlen(name, USER_SIZE - 1));
    one.host = htonl(qd_get_u32(&in[HOST_AT]));
    return one;
}

void QD_Participant_List::encode(std::span<uint8_t> out) const
{
    std::fill(out.begin(), out.end(), uint8_t {0});
    qd_put_u32(&out[0], static_cast<uint32_t>(sender_id));
    qd_put_u32(&out[COUNT_AT], static_cast<uint32_t>(members.size()));
    auto rest = out.subspan(MEMBERS_AT);
    for (const _participant& member : members) {
        member.encode(rest.first(_participant::IMAGE_SIZE));
        rest = rest.subspan(_participant::IMAGE_SIZE);
    }
}

std::optional<QD_Participant_List> QD_Participant_List::decode(std::span<const uint8_t> in)
{
    if (in.size() < MEMBERS_AT)
        return std::nullopt;
    const uint32_t count = qd_get_u32(&in[COUNT_AT]); // a negative one is a large one here
    auto rest = in.subspan(MEMBERS_AT);
    if (count > MAX_MEMBERS || rest.size() < count * _participant::IMAGE_SIZE)
        return std::nullopt;

    QD_Participant_List list;
    list.sender_id = static_cast<int32_t>(qd_get_u32(&in[0]));
    for (uint32_t i = 0; i < count; ++i) {
        list.members.push_back(_participant::decode(rest.first<_participant::IMAGE_SIZE>()));
        rest = rest.subspan(_participant::IMAGE_SIZE);
    }
    return list;
}
