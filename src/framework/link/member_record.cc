#include "framework/link/member_record.h"

#include "platform/base/bytes.h"

#include <arpa/inet.h>

std::optional<QD_Member_Record> QD_Member_Record::decode(std::span<const uint8_t> payload)
{
    if (payload.empty())
        return std::nullopt;
    QD_Member_Record record;
    record.command = static_cast<Command>(payload[0]);
    size_t start = 1; // of the address
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

    constexpr size_t ADDRESS_AND_ID = 8;
    if (payload.size() < start + ADDRESS_AND_ID)
        return std::nullopt;
    auto rest = payload.subspan(start);
    record.host = htonl(qd_get_u32(&rest[0]));
    record.id = static_cast<int32_t>(qd_get_u32(&rest[4]));
    if (record.command == REMOVE)
        return record; // who goes has no use for a name
    rest = rest.subspan(ADDRESS_AND_ID);
    if (rest.empty() || rest.size() - 1 < rest[0])
        return std::nullopt;
    record.name.assign(reinterpret_cast<const char*>(rest.data()) + 1, rest[0]);
    return record;
}
