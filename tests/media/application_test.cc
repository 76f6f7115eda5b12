#include "media/application.h"

#include "tests/support/session.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wait.h"

#include <gmock/gmock.h>
#include <sys/syscall.h>

using testing::_;

namespace {

int attached = 0;     // filters
bool refused = false; // by the system

}

// In place of the C library's: filters are counted and reach the kernel only where they are
// few, since it frees them late.
extern "C" int setsockopt(int fd, int level, int name, const void* value, socklen_t size) noexcept
{
    if (level == SOL_SOCKET && name == SO_ATTACH_FILTER && (++attached > 100 || refused)) {
        errno = ENOMEM;
        return -1;
    }
    return static_cast<int>(syscall(SYS_setsockopt, fd, level, name, value, size));
}

namespace {

constexpr int PORT = 23456;

class Application : public QD_Application {
public:
    Application() : QD_Application(PORT) {}
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

TEST_F(ApplicationTest, TakesMembersDatagramsOfAnyLengthAndNoOthers)
{
    join(7, 2);
    const auto with
        = [this](size_t at, char byte) { return std::string(good_).replace(at, 1, 1, byte); };
    const std::string longest = good_ + std::string(64988, 'z');
    Application app;
    ASSERT_EQ(app.init(), 0);
    expect(app, {1, 64988, 0, 2},
        {with(0, '\xbf') + "1", with(0, '\x40'), with(0, '\xc0'), with(11, 8), with(8, 1), "",
            good_.substr(0, 11), longest, good_, good_ + "22"});
    session_->delete_member(7);
    join(8, 2);
    expect(app, {3}, {good_, with(11, 8) + "333"});
    app.close();
}

TEST_F(ApplicationTest, AttachesOneFilterPerSocketAndDoesWithoutIt)
{
    const int before = attached;
    Application app;
    ASSERT_EQ(app.init(), 0);
    for (int i = 0; i < 500; ++i) {
        join(7, 2);
        session_->delete_member(7);
    }
    EXPECT_EQ(attached - before, 1);
    app.close();

    refused = true;
    Application unfiltered;
    ASSERT_EQ(unfiltered.init(), 0);
    refused = false;
    join(7, 2);
    join(0, 3); // whom what is not there reads as
    expect(unfiltered, {-11, -1, 1, 0},
        {"", good_.substr(0, 1), good_.substr(0, 8) + std::string(3, '\0'),
            std::string(good_).replace(0, 1, 1, '\x40') + "1", good_});
    unfiltered.close();
}
