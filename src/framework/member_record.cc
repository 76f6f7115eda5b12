#include "framework/member_record.h"

#include "platform/net/bytes.h"

#include <arpa/inet.h>

std::optional<QD_Member_Record> QD_Member_Record::decode(std::span<const uint8_t> payload)
{
    if (payload.empty())
        return std::nullopt;
    QD_Member_Record record;
    record.command = static_cast<Command>(payload[0]);
    size_t start = 1;
    switch (record.command) {
    case END:
        return record;
    case ADD_PADDED:
        start = 2;
        break;
    case ADD:
    case REMOVE:
        break;
    default:
        return std::nullopt;
    }

    constexpr size_t fixed = 9; // address, id, length of the name
    if (payload.size() < start + fixed)
        return std::nullopt;
    const uint8_t* at = &payload[start];
    const size_t length = at[8];
    if (payload.size() - start - fixed < length)
        return std::nullopt;
    record.host = htonl(qd_get_u32(at));
    record.id = static_cast<int32_t>(qd_get_u32(at + 4));
    record.name.assign(reinterpret_cast<const char*>(at + fixed), length);
    return record;
}
