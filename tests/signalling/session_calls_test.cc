#include "tests/support/session.h"
#include "tests/support/stream_pair.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

std::string number(uint32_t value)
{
    uint8_t bytes[4];
    qd_put_u32(bytes, value);
    return {bytes, bytes + 4};
}

std::string host_bytes(int host) { return number(ntohl(qd_test_host(host))); }

std::string record(uint32_t id, std::string name, int host)
{
    name.resize(20, '\0');
    return number(id) + name + host_bytes(host);
}

std::string list(const std::vector<std::string>& records)
{
    std::string body = number(0) + number(static_cast<uint32_t>(records.size()));
    for (const std::string& one : records)
        body += one;
    return body + std::string(27, '\0');
}

std::string message(int tag, const std::string& body = "")
{
    return qd_header_image(tag, 0, "me", host_bytes(1), body.size()) + body;
}

// Streams without sockets: what is sent stays in them, to be looked at.
class SessionCallsTest : public QD_Session_Test {
protected:
    SessionCallsTest()
    {
        snprintf(session_->get_options()->local_name, 50, "me");
        session_->set_dial([this](std::span<QD_Member* const> members, Reactor*, int) {
            for (QD_Member* member : members)
                if (member->get_host() != qd_test_host(66)) // where nobody answers
                    member->set_stream(&streams_[member->get_host()]);
        });
    }

    SOCK_Stream* stream(int host) { return &streams_[qd_test_host(host)]; }

    // What was sent on a stream since the last look.
    std::string sent(int host)
    {
        const SOCK_Stream looked_at = std::exchange(*stream(host), {});
        return {looked_at.queued().begin(), looked_at.queued().end()};
    }

    int call(int host) { return session_->invite("user", qd_test_address(host).c_str()); }
    int confirm(const std::string& body)
    {
        return session_->confirmed(body.data(), static_cast<int>(body.size()));
    }

    std::map<uint32_t, SOCK_Stream> streams_;
};

}

TEST_F(SessionCallsTest, TheCallerTellsTheOthersOfANewcomerAndTheNewcomerOfAll)
{
    EXPECT_EQ(call(2), 0);
    EXPECT_EQ(sent(2), message(62, list({record(0, "me", 1)})));
    EXPECT_EQ(session_->accepted("anna", qd_test_host(2)), 0);
    EXPECT_EQ(sent(2), message(4, list({record(0, "me", 1), record(1, "anna", 2)})));
    EXPECT_EQ(session_->accepted("anna", qd_test_host(2)), -1) << "nobody is called any more";

    EXPECT_EQ(call(3), 0);
    sent(3);
    EXPECT_EQ(session_->accepted("bernt", qd_test_host(3)), 0);
    EXPECT_EQ(sent(2), message(3, record(2, "bernt", 3)));
    EXPECT_EQ(sent(3),
        message(4, list({record(0, "me", 1), record(1, "anna", 2), record(2, "bernt", 3)})));
    EXPECT_THAT(form_.users, ElementsAre(text("me", 1), text("anna", 2), text("bernt", 3)));
}

TEST_F(SessionCallsTest, CallsThatComeToNothingLeaveRoomForAnother)
{
    EXPECT_EQ(session_->invite("user", "nobody.invalid"), -1);
    EXPECT_EQ(session_->invite("user", "localhost"), 0);
    EXPECT_EQ(session_->rejected("x", 0), 0);
    EXPECT_EQ(call(66), -1);
    session_->clear_failed_invitation();
    EXPECT_EQ(call(3), 0);
    EXPECT_EQ(call(4), 0);
    EXPECT_EQ(sent(4), "") << "the first call has not been answered";
    EXPECT_EQ(session_->connection_closed(stream(3)), 0);
    EXPECT_EQ(call(4), 0);
    EXPECT_EQ(session_->rejected("x", 0), 0);
    EXPECT_EQ(call(5), 0);
    EXPECT_NE(sent(5), "");
    QD_Session_Control::stream_gone(stream(5));
    EXPECT_THAT(form_.statuses,
        ElementsAre("user@127.0.0.1 rejected invitation", "Invited user left",
            text("user", 4) + " rejected invitation", "Invited user left"));
}

TEST_F(SessionCallsTest, ConfirmationsNobodyAskedForAndAbsurdOnesChangeNothing)
{
    const std::string good = list(
        {record(0, "A", 2), record(3, "bernt", 3), record(5, "nobody", 66), record(6, "me", 1)});
    EXPECT_EQ(confirm(good), -1);
    session_->get_options()->auto_accept = 0;
    for (int host : {2, 4})
        session_->invited(new QD_Member(stream(host), 0, "m", qd_test_host(host)));
    EXPECT_EQ(confirm(good), -1) << "not accepted yet";
    EXPECT_EQ(sent(4), message(2)) << "busy";
    session_->accept_invitation();
    for (const std::string& absurd : {std::string(), list({}), good.substr(0, 8 + 4 * 28 - 1),
             list(std::vector<std::string>(101, record(1, "me", 1)))})
        EXPECT_EQ(confirm(absurd), -1);
    EXPECT_EQ(session_->get_roster()->entries.size(), 0u);
    EXPECT_EQ(confirm(good.substr(0, 8 + 4 * 28)), 0) << "the unread tail may be missing";
    EXPECT_EQ(sent(2), message(0));
    EXPECT_EQ(sent(3), message(61));
    EXPECT_EQ(session_->get_local_id(), 6);
    EXPECT_EQ(session_->get_member(0)->get_stream(), stream(2));
    EXPECT_EQ(session_->get_member(5)->get_stream(), nullptr);
    EXPECT_EQ(session_->connection_closed(stream(2)), 0);
    EXPECT_EQ(session_->connection_closed(nullptr), -1);
    EXPECT_EQ(session_->get_roster()->entries.size(), 3u);
}

TEST_F(SessionCallsTest, AStreamAnnouncesSoManyMembersAndNoMore)
{
    const auto announce = [this](int id) {
        const uint32_t host = htonl(0x7f700000 + static_cast<uint32_t>(id));
        return session_->new_member(new QD_Member(stream(4), id, "dora", host));
    };
    for (int i = 1; i <= QD_Session_Control::MAX_ANNOUNCED; ++i)
        EXPECT_EQ(announce(1000 + i), 0);
    EXPECT_EQ(announce(7), -1);
    EXPECT_EQ(announce(1001), 0) << "is there already";
    EXPECT_EQ(form_.listed.size(), size_t {QD_Session_Control::MAX_ANNOUNCED});
    EXPECT_EQ(session_->delete_member(1002), 0);
    EXPECT_EQ(announce(7), 0);
    join(8, 4); // the framework's are its own affair
    QD_Session_Control::stream_gone(stream(4));
    EXPECT_THAT(form_.listed, ElementsAre(text("m", 4)));
}

TEST_F(SessionCallsTest, TheHundredAndFirstIsSentAwayAndTheNextMayCall)
{
    const auto call_in = [this](int host) {
        EXPECT_EQ(call(host), 0);
        return session_->accepted("\x1b[2Janna", qd_test_host(host));
    };
    for (int host = 101; host < 200; ++host)
        EXPECT_EQ(call_in(host), 0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(call_in(2), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
        "QD_Session_Control: \xef\xbf\xbd[2Janna@" + qd_test_address(2)
            + " is not let in: the conference has 100 members\n");
    EXPECT_EQ(stream(2)->send_n("x", 1), -1) << "is closed";
    EXPECT_EQ(session_->get_roster()->entries.size(), 100u);
    EXPECT_EQ(session_->connection_closed(stream(150)), 0);
    EXPECT_EQ(call_in(3), 0);
    join(500, 5);
    EXPECT_EQ(call(4), 0);
    EXPECT_EQ(sent(4).size(), 56u + 28 * 100 + 35) << "no more than others take";
}
