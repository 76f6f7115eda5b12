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
    EXPECT_EQ(std::tuple(sender.handle, std::string(sender.user), sender.host),
        std::tuple(200, "bob", inet_addr("10.0.0.5")));
    EXPECT_EQ(std::tuple(receiver.handle, std::string(receiver.user), receiver.host),
        std::tuple(42, "eva", inet_addr("192.0.2.1")));
    EXPECT_EQ(std::string(in.body_, 3), "abc");

    EXPECT_EQ(in.send(&pair.stream), 0);
    EXPECT_EQ(pair.hear(), image);
}
