#include "framework/link/member_record.h"

#include <gtest/gtest.h>

TEST(MemberRecord, ARemovalNeedsNoNameAndAnAdditionNeedsAllOfIt)
{
    const std::string address_and_id("\x0a\1\2\3\0\0\0\7", 8);
    const struct {
        std::string payload;
        int id; // -1: is nothing
        const char* name = "";
    } cases[] = {
        {"?" + address_and_id, 7},
        {"?" + address_and_id + "\5bo", 7},
        {"?" + address_and_id.substr(0, 7), -1},
        {"=" + address_and_id, -1},
        {"=" + address_and_id + std::string(1, '\0'), 7},
        {"=" + address_and_id + "\3bo", -1},
        {"=" + address_and_id + "\2bo and more", 7, "bo"},
        {"<=" + address_and_id + "\2bo", 7, "bo"},
        {"<" + address_and_id + "\2", -1},
        {"x" + address_and_id, -1},
    };
    for (const auto& c : cases) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(c.payload.data());
        const auto record = QD_Member_Record::decode({bytes, c.payload.size()});
        EXPECT_EQ(record ? record->id : -1, c.id) << testing::PrintToString(c.payload);
        EXPECT_EQ(record ? record->name : "", c.name);
    }
}
