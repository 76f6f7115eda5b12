#include "media/application.h"

#include "media/member_filter.h"
#include "tests/support/session.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>

using testing::_;

namespace {

constexpr int PORT = 23456;

class Application : public QD_Application {
public:
    explicit Application(Senders senders = EVERYBODY) : QD_Application(PORT, senders) {}
    MOCK_METHOD(int, process_message, (rtp_fix_header*, char*, int), (override));
};

class ApplicationTest : public QD_Session_Test {
protected:
    // Of what is sent payloads of these lengths come, in this order, and nothing else.
    void expect(Application& app, const std::vector<int>& lengths,
        const std::vector<std::string>& datagrams) const
    {
        std::atomic<int> came = 0;
        const testing::InSequence in_order;
        for (int len : lengths)
            EXPECT_CALL(app, process_message(_, _, len)).WillOnce([&](auto...) { return ++came; });
        for (const std::string& datagram : datagrams)
            EXPECT_TRUE(anna_.send(datagram, qd_test_host(1)));
        EXPECT_TRUE(qd_wait_for([&] { return came == std::ssize(lengths); }));
        testing::Mock::VerifyAndClearExpectations(&app);
    }

    const QD_Udp_Peer anna_ {qd_test_host(2), PORT};
    const std::string good_ {"\x80\x0f\0\5\0\0\0\6\0\0\0\7", 12};
};

}

TEST_F(ApplicationTest, EveryOtherMemberGetsTheSamePacketUntilOneFails)
{
    testing::StrictMock<Application> app;
    ASSERT_EQ(app.init(), 0);
    const QD_Udp_Peer bernt(qd_test_host(3), PORT);
    join(7, 1);
    join(0x01020304, 2);
    join(-9, 3);
    EXPECT_EQ(app.send_data(128 + 14, "hello", 5), 0);
    const std::string got = anna_.receive();
    EXPECT_EQ(got.substr(0, 4), std::string("\x80\x0e\0\0", 4));
    EXPECT_EQ(got.substr(8), std::string("\0\0\0\7hello", 9));
    EXPECT_EQ(bernt.receive(), got);

    // Broadcasting is refused by the system: who comes behind gets nothing.
    session_->new_member(new QD_Member(nullptr, 3, "m", 0xffffffff));
    EXPECT_EQ(app.send_data(15, "x", 1), -1);
    EXPECT_EQ(bernt.receive().size(), 13u);
    EXPECT_EQ(anna_.receive(50), "");
    app.close();
    EXPECT_EQ(app.send_data(14, "late", 4), -1);
}

TEST_F(ApplicationTest, TakesDatagramsOfAnyLengthAndGoesOn)
{
    Application app;
    ASSERT_EQ(app.init(), 0);
    const std::string longest = good_ + std::string(64988, 'z');
    expect(app, {-11, -1, 0, 64988}, {"", good_.substr(0, 1), good_.substr(0, 11), good_, longest});
    app.close();
}

TEST_F(ApplicationTest, WhatNoMemberSentIsNeverReceivedIfAsked)
{
    Application app(QD_Application::MEMBERS);
    ASSERT_EQ(app.init(), 0);
    join(7, 2);
    const auto with
        = [this](size_t at, char byte) { return std::string(good_).replace(at, 1, 1, byte); };
    expect(app, {1, 2},
        {with(0, '\xbf') + "1", with(0, '\x40'), with(0, '\xc0'), with(11, 8), with(8, 1), "",
            good_.substr(0, 11), good_ + "22"});
    session_->delete_member(7);
    join(8, 2);
    expect(app, {3}, {good_, with(11, 8) + "333"});

    QD_Roster too_many;
    too_many.entries.resize(3000);
    EXPECT_EQ(qd_receive_members_only(app.get_data_sock(), too_many), -1);
    expect(app, {0}, {good_}); // then rather everybody's
    app.close();
}
