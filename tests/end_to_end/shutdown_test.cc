// Every way in which a real client ends.
#include "tests/support/client_under_test.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

class ShutdownTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        x_server_ = new QD_X_Server;
        x_server_->manage();
    }
    static void TearDownTestSuite() { delete x_server_; }

    ShutdownTest() : client_(2, {}) { client_.framework().announce(1, 2, "me"); }

    void expect_end(int status)
    {
        EXPECT_EQ(client_.wait(), status);
        EXPECT_EQ(qd_read_file(client_.file(".qd.cfg")).size(), 280u);
        EXPECT_EQ(client_.log().find("Sanitizer"), std::string::npos) << client_.log();
    }

    static QD_X_Server* x_server_;
    QD_Client_Under_Test client_;
};

QD_X_Server* ShutdownTest::x_server_ = nullptr;

}

TEST_F(ShutdownTest, ByTheMenusKey)
{
    QD_Person person(client_);
    ASSERT_TRUE(person.look_at("Quendal"));
    person.press("ctrl+q");
    expect_end(0);
}

TEST_F(ShutdownTest, ByTheWindowManager)
{
    QD_Person person(client_);
    ASSERT_TRUE(person.look_at("Quendal"));
    person.press("alt+F4"); // the window manager's key for closing
    expect_end(0);
}

TEST_F(ShutdownTest, ByTheFramework)
{
    client_.framework().end_session();
    expect_end(0);
    EXPECT_NE(client_.log().find("QD_AudioApp: sent "), std::string::npos);
}

TEST_F(ShutdownTest, BySignal)
{
    ASSERT_TRUE(client_.framework().settle());
    kill(client_.pid(), SIGTERM);
    expect_end(0);
}

TEST_F(ShutdownTest, ByALinkThatClosesOrBreaks)
{
    client_.framework().close_link();
    expect_end(1);
    QD_Client_Under_Test broken(3, {});
    broken.framework().send(std::string("\0\0\0\1\xff\xff\xff\xff", 8));
    EXPECT_EQ(broken.wait(), 1);
    QD_Client_Under_Test stalled(4, {});
    stalled.framework().send(std::string("\0\0\0\1\0\0", 6)); // and no more for as long as it takes
    EXPECT_EQ(stalled.wait(), 1);
}

TEST_F(ShutdownTest, WithoutAFrameworkItEndsAtOnceAndSaysWhy)
{
    QD_Temp_Dir home;
    QD_Process::Set_Up set_up;
    set_up.errors = home.file("errors");
    set_up.environment["HOME"] = home.path();
    EXPECT_EQ(qd_run({QD_BUILD_DIR "/quendal"}, set_up), 0);
    EXPECT_EQ(qd_read_file(home.file("errors")).find("invalid arguments: "), 0u);
}
