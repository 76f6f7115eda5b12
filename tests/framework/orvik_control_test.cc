#include "framework/orvik_control.h"

#include "tests/support/framework.h"
#include "tests/support/session.h"

namespace {

// The controller under test, launched by a framework that the test plays.
class OrvikControlTest : public QD_Session_Test {
protected:
    OrvikControlTest()
    {
        std::string port = framework_.port();
        char number[] = "1";
        char* argv[] = {number, number, number, number, port.data(), nullptr};
        control_ = std::make_unique<QD_Orvik_Control>(5, argv);
        framework_.accept();
    }

    void say(const std::string& payload) { framework_.send_event(9, payload); }

    QD_Test_Framework framework_;
    std::unique_ptr<QD_Orvik_Control> control_;
};

}

TEST_F(OrvikControlTest, TheFrameworkAddsAndRemovesMembersAndEndsTheSession)
{
    say(std::string("=\x7f\0\0\x05\0\0\0\x0b\x1a"
                    "a name longer than its field",
        38));
    say(std::string("<\0\x7f\0\0\x06\0\0\0\x0c\0", 11));
    EXPECT_EQ(control_->handle_events(), 0);
    EXPECT_EQ(control_->handle_events(), 0);
    ASSERT_EQ(session_->get_member_list()->size(), 2u) << "one event a poll";
    char name[QD_Member::NAME_SIZE];
    session_->get_member(11)->get_name(name);
    EXPECT_STREQ(name, "a name longer than ");
    EXPECT_EQ(session_->get_member(12)->get_stream(), nullptr);

    // Neither junk nor an id that nobody has changes anything.
    for (const std::string& junk :
        {std::string(), std::string("hello"), std::string("?\0\0\0\0\0\0\0\1\0", 10)}) {
        say(junk);
        EXPECT_EQ(control_->handle_events(), 0);
    }
    EXPECT_EQ(session_->get_member_list()->size(), 2u);
    say(std::string("?\0\0\0\0\0\0\0\x0b\0", 10));
    EXPECT_EQ(control_->handle_events(), 0);
    EXPECT_EQ(session_->get_member(11), nullptr);
    say(">");
    EXPECT_EQ(control_->handle_events(), -1);
}

TEST_F(OrvikControlTest, AQuietFrameworkCostsAtMostATenthOfASecond)
{
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(control_->handle_events(), 0);
    const auto waited = std::chrono::steady_clock::now() - before;
    EXPECT_GE(waited, std::chrono::milliseconds(99));
    EXPECT_LT(waited, std::chrono::milliseconds(1000));
    EXPECT_EQ(control_->handle_events(0), 0);
}

TEST_F(OrvikControlTest, ADisplayRequestEndsTheWaitOnce)
{
    Reactor reactor;
    reactor.add_wake(session_->get_wake().get());
    session_->set_reactor(&reactor);
    session_->get_wake().raise();
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(control_->handle_events(10000), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    EXPECT_FALSE(session_->get_wake().take());
}

TEST_F(OrvikControlTest, MessagesGoOutAsEventsOfTypeThirty)
{
    EXPECT_EQ(control_->send_msg("hello", 5), 0);
    EXPECT_EQ(framework_.hear(13), std::string("\0\0\0\x1e\0\0\0\5hello", 13));
}
