#include "media/base/rtp_header.h"

#include "platform/base/bytes.h"

void rtp_fix_header::encode(std::span<uint8_t, WIRE_SIZE> out) const
{
    out[0] = static_cast<uint8_t>((type & 3) << 6 | (p & 1) << 5 | (x & 1) << 4 | (cc & 15));
    out[1] = static_cast<uint8_t>((m & 1) << 7 | (pt & 0x7f));
    qd_put_u16(&out[2], seq);
    qd_put_u32(&out[4], ts);
    qd_put_u32(&out[8], ssrc);
}

rtp_fix_header rtp_fix_header::decode(std::span<const uint8_t, WIRE_SIZE> in)
{
    rtp_fix_header header;
    header.type = in[0] >> 6;
    header.p = in[0] >> 5 & 1;
    header.x = in[0] >> 4 & 1;
    header.cc = in[0] & 15;
    header.m = in[1] >> 7;
    header.pt = in[1] & 0x7f;
    header.seq = qd_get_u16(&in[2]);
    header.ts = qd_get_u32(&in[4]);
    header.ssrc = qd_get_u32(&in[8]);
    return header;
}
