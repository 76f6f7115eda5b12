#include "signalling/svc_handler.h"

#include "tests/signalling/stream_test.h"

#include <gmock/gmock.h>
#include <poll.h>

namespace {

std::string host_bytes(int host)
{
    const uint32_t address = qd_test_host(host);
    return {reinterpret_cast<const char*>(&address), sizeof address};
}
std::string header(int tag, size_t size = 0, int handle = 5)
{
    return qd_header_image(tag, handle, "bob", host_bytes(handle), size);
}
std::string member(int id) { return header(3, 0, id); } // at the address of that number

class SvcHandlerTest : public QD_Stream_Test {
protected:
    // The peer's end of a stream that was accepted.
    struct Guest : QD_Stream_Pair {
        SOCK_Stream* accepted = nullptr;
        bool ended() const
        {
            pollfd end {peer.get(), 0, 0};
            return ::poll(&end, 1, 0) == 1;
        }
        bool takes_64k() const
        {
            static const char much[64 << 10] = {};
            return accepted->send_n(much, sizeof much) == sizeof much;
        }
    };

    SvcHandlerTest() { session_->get_options()->auto_accept = 0; }

    Guest accept()
    {
        Guest guest;
        auto handler = std::make_unique<QD_Svc_Handler>();
        handler->set_place(places_.take(qd_test_host(5), handler->peer()));
        guest.accepted = guest.serve(std::move(handler), &reactor_);
        return guest;
    }

    QD_Places places_ {[this](const SOCK_Stream* stream) { return session_->uses(stream); }};
};

}

TEST_F(SvcHandlerTest, MessagesAreServedAsTheyBecomeComplete)
{
    const Guest bob = accept();
    const auto tell = [&](int tag, const std::string& body = "") {
        for (const char c : header(tag, body.size(), 200) + body) {
            bob.send({c});
            run();
        }
        return session_->get_member(200);
    };
    ASSERT_NE(tell(3), nullptr);
    EXPECT_THAT(form_.listed, testing::ElementsAre(text("bob", 200)));
    EXPECT_EQ(tell(61)->get_stream(), bob.accepted);
    EXPECT_EQ(tell(1), nullptr);
    tell(62, std::string("\0\0\0\0\xff\xff\xff\xff", 8));
    EXPECT_EQ(session_->reject_invitation(), -1) << "a call with a broken list";
    tell(62, std::string(8, '\0'));
    EXPECT_EQ(session_->reject_invitation(), 0);
}

TEST_F(SvcHandlerTest, PeersThatEndOrTalkNonsenseAreEndedAlone)
{
    const Guest other = accept();
    struct {
        std::string bytes;
        bool closes;
    } const cases[] = {
        {header(62, 0x7fffffff), false},
        {header(62, 65537), false},
        {header(62).substr(0, 28), true},
        {header(62, 100) + "body", true},
        {header(62, 8) + std::string(8, '\0'), true},
        {member(5) + member(6), true},
    };
    for (const auto& c : cases) {
        const Guest bad = accept();
        bad.send(c.bytes);
        if (c.closes)
            ::shutdown(bad.peer.get(), SHUT_WR);
        run();
        EXPECT_TRUE(bad.ended()) << testing::PrintToString(c.bytes);
    }
    EXPECT_THAT(form_.statuses, testing::Contains("Inviting user left"));
    EXPECT_TRUE(session_->get_member_list()->empty() && form_.listed.empty());
    // Less than nothing is no body.
    other.send(header(7, 0x80000000) + header(7, 65536) + std::string(65536, 'x')
        + qd_header_image(3, 7, std::string(20, 'n'), host_bytes(7), 0));
    run();
    EXPECT_EQ(form_.listed.back(), text(std::string(19, 'n'), 7));
}

TEST_F(SvcHandlerTest, IncompleteMessagesDieAfterTenSeconds)
{
    const Guest silent = accept();
    const Guest slow = accept();
    const Guest known = accept();
    known.send(header(7));
    const Guest well = accept();
    well.send("half");
    for (int second = 0; second <= 10; ++second) {
        slow.send("x");
        well.send(header(7).substr(4) + "half");
        run();
        EXPECT_EQ(silent.ended(), second == 10);
        EXPECT_EQ(slow.ended(), second == 10);
        pass(1);
    }
    EXPECT_FALSE(known.ended() || well.ended());
}

TEST_F(SvcHandlerTest, APeerThatNeverReadsIsEndedAfterTwoSecondsOrAtTheBound)
{
    const Guest deaf = accept();
    const Guest reader = accept();
    for (const Guest* guest : {&deaf, &reader}) {
        guest->send(header(7));
        while (guest->accepted->queued().empty())
            EXPECT_TRUE(guest->takes_64k());
    }
    pass(1);
    std::vector<char> bytes(1 << 20);
    while (::recv(reader.peer.get(), bytes.data(), bytes.size(), MSG_DONTWAIT) > 0)
        run();
    pass(1);
    EXPECT_FALSE(deaf.ended());
    pass(1);
    EXPECT_TRUE(deaf.ended() && !reader.ended());
    int taken = 0;
    while (taken < 100 && reader.takes_64k())
        ++taken;
    EXPECT_LT(taken, 10);
    run();
    EXPECT_TRUE(reader.ended());
}

TEST_F(SvcHandlerTest, AFloodIsTakenInDoses)
{
    const Guest flood = accept();
    const Guest other = accept();
    run();
    std::string many;
    for (int i = 0; i < 500; ++i)
        many += member(5);
    flood.send(many);
    other.send(member(6));
    const auto taken = [this] { return std::exchange(form_.statuses, {}).size(); };
    reactor_.wait(-1, 0);
    reactor_.dispatch();
    EXPECT_EQ(taken(), 8u + 1u) << "the other has its turn";
    run();
    EXPECT_EQ(taken(), 200u - 8u);
    for (size_t rest : {200, 100}) {
        pass(1);
        run();
        EXPECT_EQ(taken(), rest) << "late, and not lost";
    }
}
