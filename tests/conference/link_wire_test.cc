#include "conference/link_wire.h"

#include <gtest/gtest.h>

// An id of four different bytes and an address whose bytes differ show the
// order; the second record is the shortest there is.
TEST(LinkWire, RecordsHaveTheirBytesInPlace)
{
    EXPECT_EQ(qd_add_record(0x7f010203, 0x01020304, "anna"),
        (QD_Bytes {'=', 0x7f, 1, 2, 3, 1, 2, 3, 4, 4, 'a', 'n', 'n', 'a'}));
    EXPECT_EQ(qd_remove_record(0x7f000002, 9, ""), (QD_Bytes {'?', 0x7f, 0, 0, 2, 0, 0, 0, 9, 0}));
    EXPECT_EQ(qd_end_record(), (QD_Bytes {'>'}));
    EXPECT_EQ(qd_event_image(51, QD_Bytes {0xaa, 0xbb}),
        (QD_Bytes {0, 0, 0, 51, 0, 0, 0, 2, 0xaa, 0xbb}));
}
