#include "framework/member_record.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

namespace {

std::optional<QD_Member_Record> decode(const std::string& payload)
{
    const auto* bytes = reinterpret_cast<const uint8_t*>(payload.data());
    return QD_Member_Record::decode({bytes, payload.size()});
}

const std::string ADD("=\x7f\0\0\x02\0\0\0\x07\x04"
                      "anna",
    14);
const std::string ADD_PADDED("<?\x7f\0\0\x02\0\0\0\x07\x04"
                             "anna",
    15);
const std::string REMOVE("?\0\0\0\0\xff\xff\xff\xfe\x01x", 11);

}

TEST(MemberRecord, BothWaysOfAddingSayTheSame)
{
    for (const std::string& payload : {ADD, ADD_PADDED, ADD + "more"}) {
        const auto record = decode(payload);
        ASSERT_TRUE(record);
        EXPECT_EQ(record->command, payload[0]);
        EXPECT_EQ(record->host, inet_addr("127.0.0.2"));
        EXPECT_EQ(record->id, 7);
        EXPECT_EQ(record->name, "anna");
    }
}

TEST(MemberRecord, CutShortAtAnyLengthItIsNothing)
{
    for (const std::string& whole : {ADD, ADD_PADDED, REMOVE})
        for (size_t length = 0; length < whole.size(); ++length)
            EXPECT_FALSE(decode(whole.substr(0, length))) << whole[0] << length;
    EXPECT_FALSE(decode("x" + ADD));
    EXPECT_FALSE(decode(std::string("=\1\2\3\4\5\6\7\x8\xff", 10) + std::string(254, 'n')));
    EXPECT_EQ(
        decode(std::string("=\1\2\3\4\5\6\7\x8\xff", 10) + std::string(255, 'n'))->name.size(),
        255u);
}
