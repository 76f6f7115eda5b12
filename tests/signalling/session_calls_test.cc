#include "platform/net/bytes.h"
#include "signalling/qd_message.h"
#include "tests/support/session.h"
#include "tests/support/stream_pair.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::string number(int value)
{
    std::string bytes(4, '\0');
    qd_put_u32(reinterpret_cast<uint8_t*>(bytes.data()), static_cast<uint32_t>(value));
    return bytes;
}

std::string host_bytes(int host)
{
    const uint32_t address = qd_test_host(host);
    return {reinterpret_cast<const char*>(&address), 4};
}

std::string record(int id, std::string name, int host)
{
    name.resize(20, '\0');
    return number(id) + name + host_bytes(host);
}

std::string list(int sender, const std::vector<std::string>& records)
{
    std::string body = number(sender) + number(static_cast<int>(records.size()));
    for (const std::string& one : records)
        body += one;
    return body + std::string(27, '\0');
}

using Sent = std::vector<std::pair<int, std::string>>;

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

    // The messages sent on a stream since the last look: "tag" and the body.
    Sent sent(int host)
    {
        const std::string all = qd_queued(*stream(host));
        Sent messages;
        for (size_t& at = looked_at_[host]; at < all.size();) {
            const size_t size = qd_get_u32(reinterpret_cast<const uint8_t*>(&all[at + 52]));
            EXPECT_EQ(all.substr(at, 56),
                qd_header_image(all[at], 0, "me", host_bytes(1), static_cast<uint32_t>(size)));
            messages.emplace_back(all[at], all.substr(at + 56, size));
            at += 56 + size;
        }
        return messages;
    }

    int call(int host) { return session_->invite("user", qd_test_address(host).c_str()); }
    void be_called(int host, const char* name, bool at_once)
    {
        session_->get_options()->auto_accept = at_once;
        session_->invited(new QD_Member(stream(host), 0, name, qd_test_host(host)));
    }
    int confirm(const std::string& body)
    {
        return session_->confirmed(body.data(), static_cast<int>(body.size()));
    }
    void join_by_call()
    {
        be_called(2, "anna", true);
        EXPECT_EQ(confirm(list(0, {record(0, "anna", 2), record(1, "me", 1)})), 0);
        form_.statuses.clear();
        sent(2);
    }
    int local() const { return session_->get_local_id(); }
    size_t members() const { return session_->get_member_list()->size(); }

    std::map<uint32_t, SOCK_Stream> streams_;
    std::map<int, size_t> looked_at_;
};

}

TEST_F(SessionCallsTest, TheCallerTellsTheOthersOfANewcomerAndTheNewcomerOfAll)
{
    EXPECT_EQ(call(2), 0);
    EXPECT_EQ(local(), 0);
    EXPECT_EQ(sent(2), (Sent {{62, list(0, {record(0, "me", 1)})}}));
    EXPECT_EQ(session_->accepted("anna", qd_test_host(2)), 0);
    EXPECT_EQ(sent(2), (Sent {{4, list(0, {record(0, "me", 1), record(1, "anna", 2)})}}));
    EXPECT_EQ(session_->accepted("anna", qd_test_host(2)), -1) << "nobody is called any more";

    EXPECT_EQ(call(3), 0);
    testing::internal::CaptureStdout();
    EXPECT_EQ(session_->accepted("bernt", qd_test_host(3)), 0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
        text("me", 1) + ", id=0\n" + text("anna", 2) + ", id=1\n");
    EXPECT_EQ(sent(2), (Sent {{3, record(2, "bernt", 3)}}));
    EXPECT_EQ(sent(3).back().second,
        list(0, {record(0, "me", 1), record(1, "anna", 2), record(2, "bernt", 3)}));
    EXPECT_THAT(form_.users, ElementsAre(text("me", 1), text("anna", 2), text("bernt", 3)));
    EXPECT_THAT(form_.statuses,
        ElementsAre(
            text("anna", 2) + " accepted invitation", text("bernt", 3) + " accepted invitation"));
}

TEST_F(SessionCallsTest, CallsThatComeToNothingLeaveRoomForAnother)
{
    EXPECT_EQ(session_->invite("user", ""), -1);
    EXPECT_THAT(form_.users, ElementsAre(text("me", 1))) << "alone in a conference";
    EXPECT_EQ(call(66), -1);
    EXPECT_EQ(call(3), 0) << "taken for a second call";
    EXPECT_THAT(sent(3), IsEmpty());
    session_->clear_failed_invitation();
    EXPECT_THAT(form_.statuses, IsEmpty());

    EXPECT_EQ(call(3), 0);
    session_->clear_failed_invitation();
    EXPECT_EQ(call(4), 0);
    EXPECT_THAT(sent(4), IsEmpty()) << "the first call has not been answered";
    EXPECT_EQ(session_->connection_closed(stream(3)), 0);
    EXPECT_EQ(call(4), 0);
    EXPECT_EQ(session_->rejected("x", 0), 0);
    EXPECT_EQ(session_->rejected("x", 0), -1);
    EXPECT_EQ(call(5), 0);
    EXPECT_EQ(sent(5).size(), 1u);
    QD_Session_Control::stream_gone(stream(5));
    EXPECT_THAT(form_.statuses,
        ElementsAre(
            "Invited user left", text("user", 4) + " rejected invitation", "Invited user left"));
    EXPECT_THAT(form_.users, ElementsAre(text("me", 1)));
}

TEST_F(SessionCallsTest, TheCalledUserAnswers)
{
    EXPECT_EQ(session_->accept_invitation(), -1);
    EXPECT_EQ(session_->reject_invitation(), -1);
    be_called(2, "anna", false);
    EXPECT_THAT(sent(2), IsEmpty());
    EXPECT_EQ(call(3), 0) << "not while invited";
    be_called(3, "bernt", true);
    EXPECT_EQ(sent(3), (Sent {{2, ""}})) << "busy";
    EXPECT_EQ(session_->reject_invitation(), 0);
    EXPECT_EQ(session_->reject_invitation(), -1);
    EXPECT_EQ(sent(2), (Sent {{2, ""}}));
    EXPECT_EQ(members(), 0u);

    be_called(2, "anna", false);
    EXPECT_EQ(session_->accept_invitation(), 0);
    EXPECT_EQ(session_->accept_invitation(), -1);
    EXPECT_EQ(sent(2), (Sent {{0, ""}}));
    EXPECT_EQ(session_->connection_closed(stream(2)), 0);
    EXPECT_THAT(form_.buttons, ElementsAre(1, 1, 0));

    be_called(2, "anna", true);
    EXPECT_EQ(sent(2), (Sent {{0, ""}})) << "accepted at once";
    be_called(3, "bernt", true);
    EXPECT_EQ(sent(3), (Sent {{2, ""}}));
    const std::string invited = "You are INVITED by " + text("anna", 2);
    EXPECT_THAT(form_.statuses, ElementsAre(invited, invited, "Inviting user left", invited));
    EXPECT_THAT(form_.buttons, ElementsAre(1, 1, 0, 1, 0));
}

TEST_F(SessionCallsTest, TheConfirmationMakesTheConference)
{
    const std::string cut(19, 'n'); // a name without an end gets one
    be_called(2, "anna", true);
    sent(2);
    testing::internal::CaptureStdout();
    EXPECT_EQ(confirm(list(0,
                  {record(0, "A", 2), record(3, "bernt", 3), record(5, std::string(20, 'n'), 66),
                      record(6, "me", 1)})),
        0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
        "Connect: " + text("bernt", 3) + ", id=3\nConnect: " + text(cut, 66) + ", id=5\n");
    EXPECT_THAT(sent(2), IsEmpty());
    EXPECT_EQ(sent(3), (Sent {{61, ""}}));
    EXPECT_EQ(local(), 6);
    EXPECT_EQ(session_->get_roster()->entries.size(), 4u);
    EXPECT_EQ(session_->get_member(0)->get_stream(), stream(2));
    EXPECT_EQ(session_->get_member(5)->get_stream(), nullptr);
    EXPECT_THAT(
        form_.users, ElementsAre(text("anna", 2), text("bernt", 3), text(cut, 66), text("me", 1)));

    EXPECT_EQ(session_->connection_closed(stream(2)), 0);
    EXPECT_EQ(form_.statuses.back(), "User left");
    EXPECT_EQ(form_.users.front(), text("bernt", 3));
    EXPECT_EQ(session_->connection_closed(stream(2)), -1);
    EXPECT_EQ(session_->connection_closed(nullptr), -1);
    EXPECT_EQ(members(), 3u);
}

TEST_F(SessionCallsTest, ConfirmationsNobodyAskedForAndAbsurdOnesChangeNothing)
{
    const std::string good = list(0, {record(0, "anna", 2), record(1, "me", 1)});
    EXPECT_EQ(confirm(good), -1);
    be_called(2, "anna", false);
    EXPECT_EQ(confirm(good), -1) << "not accepted yet";
    session_->accept_invitation();
    EXPECT_EQ(confirm(""), -1);
    EXPECT_EQ(session_->confirmed(nullptr, 0), -1);
    EXPECT_EQ(confirm(list(0, {})), -1);
    EXPECT_EQ(confirm(good.substr(0, 63)), -1);
    EXPECT_EQ(confirm(list(0, std::vector<std::string>(101, record(1, "me", 1)))), -1);
    EXPECT_EQ(local(), 255);
    EXPECT_EQ(members(), 0u);
    EXPECT_EQ(confirm(good.substr(0, 64)), 0) << "the unread tail may be missing";
}

TEST_F(SessionCallsTest, ApplicationDataGoToAllAndChatIsShown)
{
    join_by_call();
    EXPECT_EQ(session_->send_to_app(6666, -3, "hello", 5), 0);
    const std::string body = std::string(8, '\0') + number(6666) + "\xff\xfd" + "hello" + '\0';
    EXPECT_EQ(sent(2), (Sent {{5, body}}));
    EXPECT_EQ(session_->send_to_app(6666, 0, "", -1), -1);
    EXPECT_EQ(session_->send_to_app(6666, 0, nullptr, 65536 - 14), -1);

    const auto receive = [&](int id, const std::string& data) {
        session_->app_message(id, data.data(), static_cast<int>(data.size()));
    };
    receive(0, body);
    receive(9, body);
    receive(0, std::string(8, '\0') + number(6667) + body.substr(12));
    receive(0, body.substr(0, 14));
    session_->app_message(0, nullptr, 0);
    EXPECT_THAT(form_.chats, ElementsAre("0/-3: hello"));
}

TEST_F(SessionCallsTest, ResetLeavesStreamsOpenAndQuitClosesThem)
{
    EXPECT_EQ(session_->connect(9, stream(3)), -1);
    join_by_call();
    session_->connect(1, stream(3));
    session_->reset();
    EXPECT_EQ(stream(3)->send_n("x", 1), 1);
    join_by_call();
    session_->quit();
    EXPECT_EQ(stream(2)->send_n("x", 1), -1);
    EXPECT_EQ(members(), 0u);
    EXPECT_THAT(session_->get_roster()->entries, IsEmpty());
    be_called(3, "bernt", false);
    EXPECT_EQ(session_->reject_invitation(), 0) << "idle again";
}

TEST_F(SessionCallsTest, AStreamAnnouncesSoManyMembersAndNoMore)
{
    const auto announce = [&](SOCK_Stream* by) {
        return session_->new_member(new QD_Member(by, 7, "dora", qd_test_host(4)));
    };
    for (int i = 0; i < QD_Session_Control::MAX_ANNOUNCED; ++i)
        EXPECT_EQ(announce(stream(4)), 0);
    EXPECT_EQ(announce(stream(4)), -1);
    EXPECT_EQ(announce(nullptr), 0) << "the framework's are its own affair";
    EXPECT_EQ(form_.stat.users.size(), 1001u);
}
