#include "signalling/message.h"

#include "signalling/msg_header.h"
#include "tests/support/loopback.h"
#include "tests/support/stream_pair.h"
#include "tests/support/temp_dir.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>

namespace {

struct Test_Message : Message<QD_Msg_Header, SOCK_Stream> {
    using Message::body_;
    using Message::header_;
    using Message::Message;
    int execute() override { return 0; }
    ~Test_Message() override { destroy(); }
};

// Headers carry the local user's name and address.
struct MessageTest : testing::Test {
    MessageTest()
    {
        qd_use_test_address();
        setenv("HOME", home.path().c_str(), 1);
    }
    QD_Temp_Dir home;
};

const std::string HOST("\x0a\x00\x00\x05", 4);

}

// The bytes are written by hand, never by the code under test.
TEST_F(MessageTest, HeaderAndBodyAgreeWithTheWireImageBothWays)
{
    QD_Stream_Pair pair;
    std::string image = qd_header_image(62, 200, "bob", HOST, 3, 9) + "abc";
    image.replace(27, 4,
        std::string("\x2a"
                    "eva",
            4));
    image.replace(48, 4, std::string("\xc0\x00\x02\x01", 4));
    pair.send(image);
    Test_Message in;
    EXPECT_EQ(in.recv(&pair.stream), 1);
    _participant sender;
    _participant receiver;
    in.header_.get_sender(&sender);
    in.header_.get_receiver(&receiver);
    EXPECT_EQ(in.header_.get_tag(), 62);
    EXPECT_EQ(in.header_.get_session(), 9);
    EXPECT_EQ(sender.handle, 200);
    EXPECT_STREQ(sender.user, "bob");
    EXPECT_EQ(sender.host, inet_addr("10.0.0.5"));
    EXPECT_EQ(receiver.handle, 42);
    EXPECT_STREQ(receiver.user, "eva");
    EXPECT_EQ(receiver.host, inet_addr("192.0.2.1"));
    EXPECT_EQ(std::string(in.body_, 3), "abc");

    EXPECT_EQ(in.send(&pair.stream), 0);
    EXPECT_EQ(pair.hear(), image);
}

TEST_F(MessageTest, TheLargestBodyIsTakenAndNamesWithoutAnEndAreCut)
{
    struct {
        std::string bytes;
        int result;
    } const cases[]
        = {{qd_header_image(5, 0, std::string(20, 'n'), HOST, 65536) + std::string(65536, 'x'), 1},
            {qd_header_image(5, 0, "", HOST, 65537), -1}, {std::string(30, 'x'), -1}};
    for (const auto& c : cases) {
        QD_Stream_Pair pair;
        pair.send(c.bytes);
        Test_Message message;
        EXPECT_EQ(message.recv(&pair.stream), c.result);
        EXPECT_EQ(message.body_ != nullptr, c.result == 1);
        _participant sender;
        message.header_.get_sender(&sender);
        EXPECT_LE(strnlen(sender.user, 20), 19u);
    }
}
