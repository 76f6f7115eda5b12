#include "media/application.h"

#include "media/member_filter.h"
#include "tests/support/session.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wait.h"

#include <thread>

namespace {

constexpr int PORT = 23456;

struct Message {
    rtp_fix_header header;
    std::string payload;
    int len;
};

class Recorder : public QD_Application {
public:
    explicit Recorder(Senders senders = EVERYBODY) : QD_Application(PORT, senders) {}

    int process_message(rtp_fix_header* hdr, char* data, int len) override
    {
        QD_Lock hold(mutex_);
        messages_.push_back(
            {*hdr, len > 0 ? std::string(data, static_cast<size_t>(len)) : "", len});
        return 0;
    }

    std::vector<Message> messages()
    {
        QD_Lock hold(mutex_);
        return messages_;
    }

private:
    QD_Mutex mutex_;
    std::vector<Message> messages_;
};

using ApplicationTest = QD_Session_Test;

}

TEST_F(ApplicationTest, EveryOtherMemberGetsTheSamePacketUntilOneFails)
{
    Recorder app;
    ASSERT_EQ(app.init(), 0);
    QD_Udp_Peer anna(qd_test_host(2), PORT);
    QD_Udp_Peer bernt(qd_test_host(3), PORT);
    ASSERT_TRUE(anna.bound() && bernt.bound());

    EXPECT_EQ(app.send_data(15, "alone", 5), 0); // packet 0, to nobody
    join(7, 1);
    join(0x01020304, 2);
    join(-9, 3);
    EXPECT_EQ(app.send_data(128 + 14, "hello", 5), 0);
    const std::string got = anna.receive();
    EXPECT_EQ(got.substr(0, 4), std::string("\x80\x0e\x00\x01", 4));
    EXPECT_EQ(got.substr(8), std::string("\x00\x00\x00\x07hello", 9));
    EXPECT_EQ(bernt.receive(), got);
    EXPECT_EQ(app.send_data(14, "", 0), 0);
    EXPECT_EQ(anna.receive().substr(2, 2), std::string("\x00\x02", 2));
    EXPECT_EQ(bernt.receive().size(), 12u);
    EXPECT_EQ(app.get_sent(), 3);

    // Broadcasting is refused by the system: who comes behind gets nothing.
    session_->new_member(new QD_Member(nullptr, 3, "m", 0xffffffff));
    EXPECT_EQ(app.send_data(15, "x", 1), -1);
    EXPECT_EQ(bernt.receive().size(), 13u);
    EXPECT_EQ(anna.receive(50), "");

    Recorder second;
    EXPECT_EQ(second.init(), -1) << "the port is taken";
    app.close();
    EXPECT_EQ(app.send_data(14, "late", 4), -1);
}

TEST_F(ApplicationTest, TakesDatagramsOfAnyLengthAndGoesOn)
{
    Recorder app;
    ASSERT_EQ(app.init(), 0);
    QD_Udp_Peer peer(qd_test_host(2), PORT);
    const std::string header("\x80\x0f\x00\x05\x00\x00\x00\x06\x00\x00\x00\x07", 12);
    const uint32_t to = qd_test_host(1);
    for (const std::string& datagram : {std::string(), header.substr(0, 1), std::string(),
             header.substr(0, 11), header, header + std::string(64988, 'z')})
        ASSERT_TRUE(peer.send(datagram, to));

    ASSERT_TRUE(qd_wait_for([&] { return app.messages().size() == 4; }))
        << "empty datagrams are never received, the others all are";
    const std::vector<Message> got = app.messages();
    EXPECT_EQ(got[0].len, -11);
    EXPECT_EQ(got[1].len, -1);
    EXPECT_EQ(got[2].len, 0);
    EXPECT_EQ(got[2].header, (rtp_fix_header {2, 0, 0, 0, 0, 15, 5, 6, 7}));
    EXPECT_EQ(got[3].payload, std::string(64988, 'z'));
    app.close();
}

TEST_F(ApplicationTest, WhatNoMemberSentIsNeverReceivedIfAsked)
{
    Recorder app(QD_Application::MEMBERS);
    join(-9, qd_test_host(1));
    ASSERT_EQ(app.init(), 0);
    join(7, qd_test_host(2));
    QD_Udp_Peer peer(qd_test_host(2), PORT);
    const auto packet = [](char first, int sender) {
        std::string header("\0\x0f\0\5\0\0\0\6", 8);
        header[0] = first;
        for (int shift = 24; shift >= 0; shift -= 8)
            header += static_cast<char>(static_cast<uint32_t>(sender) >> shift);
        return header + "z";
    };
    const auto receives = [&](const std::vector<std::string>& datagrams) {
        const size_t before = app.messages().size();
        for (const std::string& datagram : datagrams)
            peer.send(datagram, qd_test_host(1));
        peer.send(packet('\x80', -9), qd_test_host(1)); // the last
        qd_wait_for([&] {
            const auto got = app.messages();
            return got.size() > before && got.back().header.ssrc == static_cast<uint32_t>(-9);
        });
        return app.messages().size() - before - 1;
    };
    const std::string good = packet('\xbf', 7);
    EXPECT_EQ(receives({good, good.substr(0, 12)}), 2u);
    EXPECT_EQ(receives({packet('\x40', 7), packet('\xc0', 7), packet('\x80', 8), "",
                  good.substr(0, 11), good.substr(0, 1)}),
        0u);
    session_->delete_member(7);
    EXPECT_EQ(receives({good}), 0u);

    QD_Roster too_many;
    too_many.entries.resize(3000);
    EXPECT_EQ(qd_receive_members_only(app.get_data_sock(), too_many), -1);
    EXPECT_EQ(receives({packet('\x40', 8)}), 1u) << "then rather everybody's";
    app.close();
    join(7, qd_test_host(2)); // which concerns it no more
}

TEST_F(ApplicationTest, ThePacketNumberWrapsOnTheWireOnly)
{
    Recorder app;
    rtp_fix_header header;
    header.m = header.p = header.ssrc = 1;
    for (int i = 0; i < 65536; ++i)
        app.fill_rtp_header(&header, 0);
    EXPECT_EQ(header.seq, 65535);
    app.fill_rtp_header(&header, 200);
    EXPECT_EQ(header, (rtp_fix_header {2, 0, 0, 0, 0, 72, 0, header.ts, 0}));
    EXPECT_EQ(app.get_sent(), 65537);
}

TEST_F(ApplicationTest, SendingAndReceivingOutliveJoinsLeavesAndTheClose)
{
    Recorder app;
    ASSERT_EQ(app.init(), 0);
    QD_Udp_Peer peer(qd_test_host(2), PORT);
    join(1, 1);
    std::atomic<bool> going = true;
    std::thread sender([&] {
        while (going)
            app.send_data(15, "x", 1);
    });
    for (int round = 0; round < 100; ++round) {
        join(2, 2);
        EXPECT_EQ(app.get_internal_id(2), session_->get_member(2)->get_internal_id());
        session_->delete_member(2);
        EXPECT_EQ(app.get_internal_id(2), -1);
    }
    app.close();
    going = false;
    sender.join();
    EXPECT_EQ(app.get_data_sock(), -1);
}
