#include "media/rtp_header.h"

#include <array>
#include <gtest/gtest.h>

using Wire = std::array<uint8_t, rtp_fix_header::WIRE_SIZE>;

// The bytes are written by hand from RFC 3550, 5.1.
TEST(RtpHeader, AgreesWithTheWireImageBothWays)
{
    struct {
        const char* why;
        rtp_fix_header header;
        Wire wire;
    } const cases[] = {
        {"as sent", {2, 0, 0, 0, 0, 15, 0x0102, 0x03040506, 0x0708090a},
            {0x80, 0x0f, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10}},
        {"each flag alone: p", {0, 1, 0, 0, 0, 0, 0, 0, 0}, {0x20}},
        {"x", {0, 0, 1, 0, 0, 0, 0, 0, 0}, {0x10}},
        {"m", {0, 0, 0, 0, 1, 0, 0, 0, 0}, {0, 0x80}},
        {"all at their largest", {3, 1, 1, 15, 1, 127, 0xffff, 0xffffffff, 0xffffffff},
            {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Wire out {};
        c.header.encode(out);
        EXPECT_EQ(out, c.wire);
        EXPECT_EQ(rtp_fix_header::decode(c.wire), c.header);
    }
}
