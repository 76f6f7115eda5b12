#include "signalling/svc_handler.h"

#include "tests/signalling/stream_test.h"

#include <gmock/gmock.h>
#include <poll.h>

using testing::ElementsAre;
using testing::StartsWith;

namespace {

const std::string HOST("\x0a\x00\x00\x05", 4);

std::string header(int tag, uint32_t size = 0)
{
    return qd_header_image(tag, 0, "bob", HOST, size);
}

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
    };

    SvcHandlerTest()
    {
        session_->get_options()->auto_accept = 0;
        testing::internal::CaptureStdout();
    }
    ~SvcHandlerTest() override
    {
        if (const std::string text = testing::internal::GetCapturedStdout(); HasFailure())
            fputs(text.c_str(), stdout);
    }

    Guest accept()
    {
        Guest guest;
        auto handler = std::make_unique<QD_Svc_Handler>(place_);
        guest.accepted = handler->peer();
        *guest.accepted = std::move(guest.stream);
        EXPECT_EQ(handler->open(&reactor_), 0);
        reactor_.adopt(std::move(handler));
        return guest;
    }

    // What was printed since the last look.
    static std::string printed()
    {
        std::string text = testing::internal::GetCapturedStdout();
        testing::internal::CaptureStdout();
        return text;
    }

    std::shared_ptr<void> place_ = std::make_shared<int>();
};

}

TEST_F(SvcHandlerTest, MessagesAreServedAsTheyBecomeComplete)
{
    const Guest bob = accept();
    const std::string body = std::string(35, '\0');
    const std::string call = header(62, 35) + body + header(7);
    for (const char c : call.substr(0, call.size() - 1)) {
        EXPECT_EQ(session_->reject_invitation(), -1);
        bob.send({c});
        run();
        if (form_.statuses.size() == 1)
            session_->reject_invitation();
    }
    EXPECT_THAT(form_.statuses, ElementsAre("You are INVITED by bob@10.0.0.5"));
    EXPECT_EQ(bob.hear()[0], 2) << "rejected on the stream that the call came by";
    bob.send({call.back()});
    run();
    EXPECT_THAT(printed(),
        StartsWith("QD_Msg_Header: received message of type 62 from 10.0.0.5, size 35\n"
                   "QD_Message: received message of type 62 from 10.0.0.5\n"
                   "QD_Msg_Header: received message of type 7"));
    EXPECT_FALSE(bob.ended());
}

TEST_F(SvcHandlerTest, EveryTagReachesItsOperation)
{
    const Guest bob = accept();
    const auto tell = [&](int tag, int handle, const std::string& body) {
        const auto size = static_cast<uint32_t>(body.size());
        bob.send(qd_header_image(tag, handle, "bob", HOST, size) + body);
        run();
    };
    tell(3, 200, ""); // the body is not read
    ASSERT_NE(session_->get_member(200), nullptr);
    EXPECT_EQ(session_->get_member(200)->get_stream(), bob.accepted);
    EXPECT_EQ(session_->get_member(200)->get_host(), inet_addr("10.0.0.5"));
    tell(5, 200, std::string("\0\0\0\0\0\0\0\0\0\0\x1a\x0a\0\1hi\0", 17));
    EXPECT_THAT(form_.chats, ElementsAre("200/1: hi"));
    session_->get_member(200)->set_stream(nullptr);
    tell(61, 200, "");
    EXPECT_EQ(session_->get_member(200)->get_stream(), bob.accepted);
    tell(1, 200, "");
    tell(1, 200, "");
    EXPECT_EQ(session_->get_member(200), nullptr);

    tell(62, 0, std::string(7, '\0'));
    tell(62, 0, std::string("\0\0\0\0\xff\xff\xff\xff", 8));
    tell(62, 0, std::string("\0\0\0\0\x7f\xff\xff\xff", 8));
    EXPECT_EQ(session_->accept_invitation(), -1) << "calls with a broken list are dropped";
    tell(62, 0, std::string(8, '\0'));
    EXPECT_EQ(session_->accept_invitation(), 0);
    tell(4, 0, std::string("\0\0\0\0\0\0\0\1", 8) + std::string(28, '\0'));
    EXPECT_EQ(session_->get_local_id(), 0);

    // Of the answers only what they do without a call of ours can be seen here.
    tell(0, 0, "");
    tell(2, 0, "");
    EXPECT_FALSE(bob.ended());
}

TEST_F(SvcHandlerTest, PeersThatEndOrTalkNonsenseAreEndedAlone)
{
    const Guest other = accept();
    other.send(header(7));
    run();
    struct {
        const char* why;
        std::string bytes;
        bool closes;
    } const cases[] = {
        {"a body of 2^31-1 bytes", header(62, 0x7fffffff), false},
        {"a body beyond the bound", header(62, 65537), false},
        {"the end at once", "", true},
        {"the end in a header", header(62).substr(0, 28), true},
        {"the end in a body", header(62, 100) + "body", true},
        {"a call, and the end", header(62, 8) + std::string(8, '\0'), true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        Guest bad = accept();
        bad.send(c.bytes);
        if (c.closes)
            ::shutdown(bad.peer.get(), SHUT_WR);
        EXPECT_EQ(place_.use_count(), 3);
        run();
        EXPECT_TRUE(bad.ended());
        EXPECT_EQ(place_.use_count(), 2) << "the stream has gone and given its place back";
    }
    EXPECT_EQ(form_.statuses.back(), "Inviting user left");
    Guest good = accept();
    good.send(header(7, 0xffffffff) + header(7, 65536)); // less than nothing is no body
    for (int part = 0; part < 16; ++part) {
        good.send(std::string(4096, 'x'));
        run();
    }
    good.send(qd_header_image(62, 0, std::string(20, 'n'), HOST, 8) + std::string(8, '\0'));
    run();
    EXPECT_EQ(form_.statuses.back(), "You are INVITED by " + std::string(19, 'n') + "@10.0.0.5");
    EXPECT_FALSE(good.ended());
    EXPECT_FALSE(other.ended());
}

TEST_F(SvcHandlerTest, IncompleteMessagesDieAfterTenSeconds)
{
    const Guest silent = accept();
    const Guest slow = accept();
    const Guest well = accept();
    run();
    for (int second = 0; second < 9; ++second) {
        slow.send("x");
        well.send(header(7) + "half");
        run();
        well.send(header(7).substr(4));
        pass(1);
    }
    EXPECT_FALSE(silent.ended());
    EXPECT_FALSE(slow.ended());
    pass(1);
    EXPECT_TRUE(silent.ended());
    EXPECT_TRUE(slow.ended());
    EXPECT_FALSE(well.ended());
}

TEST_F(SvcHandlerTest, APeerThatNeverReadsIsEndedAfterTwoSecondsOrAtTheBound)
{
    const std::string much(64 << 10, 'x');
    const auto size = static_cast<int>(much.size());
    const Guest deaf = accept();
    const Guest reader = accept();
    deaf.send(header(7));
    reader.send(header(7));
    run();
    const auto fill = [&](const Guest& guest) {
        while (guest.accepted->queued().empty())
            EXPECT_EQ(guest.accepted->send_n(much.data(), size), size);
    };
    fill(deaf);
    fill(reader);
    run();
    pass(1);
    size_t got = 0;
    for (size_t n = 1; n > 0; got += n) {
        n = reader.hear().size();
        run();
    }
    EXPECT_TRUE(reader.accepted->queued().empty());
    EXPECT_EQ(got % much.size(), 0u) << "nothing is lost";
    fill(reader);
    pass(1);
    EXPECT_TRUE(deaf.ended());
    EXPECT_FALSE(reader.ended());

    int sent = 0;
    while (reader.accepted->send_n(much.data(), size) == size)
        ASSERT_LE(++sent, 4);
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
        many += header(7);
    flood.send(many);
    other.send(header(62, 8) + std::string(8, '\0'));
    const auto taken = [] {
        const std::string text = printed();
        return std::count(text.begin(), text.end(), '\n') / 2;
    };
    reactor_.wait(-1, 0);
    EXPECT_EQ(reactor_.dispatch(), 2);
    EXPECT_EQ(taken(), QD_Svc_Handler::MESSAGES_PER_EVENT + 1) << "the other has its turn";
    run();
    EXPECT_EQ(taken(), QD_Svc_Handler::MESSAGES_PER_SECOND - QD_Svc_Handler::MESSAGES_PER_EVENT);
    pass(1);
    run();
    EXPECT_EQ(taken(), 200);
    pass(1);
    run();
    EXPECT_EQ(taken(), 100) << "late, and not lost";
    EXPECT_FALSE(flood.ended());
}

TEST_F(SvcHandlerTest, NobodyKeepsAStreamThatHasGone)
{
    const Guest bob = accept();
    for (int id : {5, 6})
        bob.send(qd_header_image(3, id, "bob", HOST, 0));
    bob.send(header(62, 8) + std::string(8, '\0'));
    run();
    reactor_.clear();
    EXPECT_TRUE(bob.ended());
    EXPECT_EQ(session_->get_member(5)->get_stream(), nullptr);
    EXPECT_EQ(session_->get_member(6)->get_stream(), nullptr);
    EXPECT_EQ(session_->accept_invitation(), -1);
}
