// Big-endian integers in byte buffers, by shifts. The caller sees to the room.
#pragma once

#include <cstdint>

inline void qd_put_u16(uint8_t* out, uint16_t value)
{
    out[0] = static_cast<uint8_t>(value >> 8);
    out[1] = static_cast<uint8_t>(value);
}

inline void qd_put_u32(uint8_t* out, uint32_t value)
{
    qd_put_u16(out, static_cast<uint16_t>(value >> 16));
    qd_put_u16(out + 2, static_cast<uint16_t>(value));
}

inline uint16_t qd_get_u16(const uint8_t* in) { return static_cast<uint16_t>(in[0] << 8 | in[1]); }

inline uint32_t qd_get_u32(const uint8_t* in)
{
    return static_cast<uint32_t>(qd_get_u16(in)) << 16 | qd_get_u16(in + 2);
}
