#include "signalling/app_record.h"

#include "platform/base/bytes.h"

#include <algorithm>

namespace {

constexpr size_t APP_AT = 8;
constexpr size_t KIND_AT = 12;
constexpr size_t DATA_AT = 14;
constexpr size_t TAIL = 1;

}

void QD_App_Record::encode(std::span<uint8_t> out) const
{
    std::fill(out.begin(), out.end(), uint8_t {0});
    qd_put_u32(&out[APP_AT], static_cast<uint32_t>(app));
    qd_put_u16(&out[KIND_AT], static_cast<uint16_t>(kind));
    std::copy(data.begin(), data.end(), out.begin() + DATA_AT);
}

std::optional<QD_App_Record> QD_App_Record::decode(std::span<const uint8_t> in)
{
    if (in.size() < DATA_AT + TAIL)
        return std::nullopt;
    return QD_App_Record {static_cast<int32_t>(qd_get_u32(&in[APP_AT])),
        static_cast<int16_t>(qd_get_u16(&in[KIND_AT])),
        in.subspan(DATA_AT, in.size() - DATA_AT - TAIL)};
}
