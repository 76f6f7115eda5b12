#include "framework/link/link_wire.h"

#include "platform/base/bytes.h"

#include <algorithm>

namespace {

QD_Bytes member_record(char command, uint32_t address, uint32_t id, std::string_view name)
{
    QD_Bytes record(10 + name.size());
    record[0] = static_cast<uint8_t>(command);
    qd_put_u32(&record[1], address);
    qd_put_u32(&record[5], id);
    record[9] = static_cast<uint8_t>(name.size());
    std::copy(name.begin(), name.end(), record.begin() + 10);
    return record;
}

}

QD_Bytes qd_event_image(int type, std::span<const uint8_t> payload)
{
    QD_Bytes image(8 + payload.size());
    qd_put_u32(&image[0], static_cast<uint32_t>(type));
    qd_put_u32(&image[4], static_cast<uint32_t>(payload.size()));
    std::copy(payload.begin(), payload.end(), image.begin() + 8);
    return image;
}

QD_Bytes qd_add_record(uint32_t address, uint32_t id, std::string_view name)
{
    return member_record('=', address, id, name);
}

QD_Bytes qd_remove_record(uint32_t address, uint32_t id, std::string_view name)
{
    return member_record('?', address, id, name);
}

QD_Bytes qd_end_record() { return {'>'}; }
