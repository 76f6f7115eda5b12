#include "signalling/participant.h"

#include "signalling/app_record.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <string>

namespace {

std::span<const uint8_t> bytes(const std::string& text)
{
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

template <class IMAGE> std::string encoded(const IMAGE& image)
{
    std::string out(image.image_size(), '\xee'); // zero is written, not found
    image.encode({reinterpret_cast<uint8_t*>(out.data()), out.size()});
    return out;
}

std::string zeros(size_t n) { return std::string(n, '\0'); }

const std::string ANNA = std::string("\x01\x02\x03\x04"
                                     "anna",
                             8)
    + zeros(16) + "\x7f\x01\x02\x03";
const std::string LONG_NAME = "\xff\xff\xff\xff" + std::string(20, 'n') + "\x0a\x01\x01\x05";

}

TEST(Participant, ListsAgreeWithTheWireImageBothWays)
{
    const std::string image = std::string("\0\0\0\xff\0\0\0\2", 8) + ANNA + LONG_NAME + zeros(27);
    ASSERT_EQ(image.size(), 28u * 2 + 35);
    const auto list = QD_Participant_List::decode(bytes(image));
    ASSERT_TRUE(list);
    EXPECT_EQ(list->sender_id, 255);
    ASSERT_EQ(list->members.size(), 2u);
    EXPECT_EQ(list->members[0].handle, 0x01020304);
    EXPECT_STREQ(list->members[0].user, "anna");
    EXPECT_EQ(list->members[0].host, inet_addr("127.1.2.3"));
    EXPECT_EQ(list->members[1].handle, -1);
    EXPECT_STREQ(list->members[1].user, "nnnnnnnnnnnnnnnnnnn") << "cut, with an end";

    std::string again = image;
    again[8 + 28 + 4 + 19] = '\0';
    EXPECT_EQ(encoded(*list), again);
}

TEST(Participant, ShortAndAbsurdListsAreRefused)
{
    const auto count = [](const std::string& n) { return zeros(4) + n; };
    const std::string one("\0\0\0\1", 4);
    EXPECT_TRUE(QD_Participant_List::decode(bytes(count(zeros(4)))));
    EXPECT_TRUE(QD_Participant_List::decode(bytes(count(one) + ANNA)));
    EXPECT_FALSE(QD_Participant_List::decode(bytes("")));
    EXPECT_FALSE(QD_Participant_List::decode(bytes(zeros(7))));
    EXPECT_FALSE(QD_Participant_List::decode(bytes(count(one) + ANNA.substr(1))));
    EXPECT_FALSE(QD_Participant_List::decode(bytes(count("\xff\xff\xff\xff") + ANNA)));
    EXPECT_FALSE(QD_Participant_List::decode(bytes(count("\x7f\xff\xff\xff") + ANNA)));
    EXPECT_TRUE(QD_Participant_List::decode(bytes(count({"\0\0\0\x64", 4}) + zeros(2800))));
    EXPECT_FALSE(QD_Participant_List::decode(bytes(count({"\0\0\0\x65", 4}) + zeros(2828))));
}

TEST(AppRecord, AgreesWithTheWireImageBothWays)
{
    const std::string image
        = zeros(8) + std::string("\0\0\x1a\x0a\xff\xfe", 6) + "hello" + zeros(1);
    ASSERT_EQ(image.size(), 20u);
    const auto record = QD_App_Record::decode(bytes(image));
    ASSERT_TRUE(record);
    EXPECT_EQ(record->app, 6666);
    EXPECT_EQ(record->kind, -2);
    EXPECT_EQ(std::string(record->data.begin(), record->data.end()), "hello");
    EXPECT_EQ(encoded(*record), image);

    EXPECT_TRUE(QD_App_Record::decode(bytes(zeros(15)))->data.empty());
    EXPECT_FALSE(QD_App_Record::decode(bytes(zeros(14))));
    EXPECT_FALSE(QD_App_Record::decode({}));
}
