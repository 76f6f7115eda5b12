#include "signalling/listener.h"

#include "platform/net/udp_socket.h"
#include "signalling/connector.h"
#include "tests/signalling/stream_test.h"

#include <sys/resource.h>

using namespace std::chrono_literals;

namespace {

QD_Fd tcp_socket(int host, uint16_t port)
{
    QD_Fd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    EXPECT_EQ(qd_bind(fd.get(), qd_test_host(host), port), 0);
    return fd;
}

// A connection under way from `from`, which the system makes without the listener's doing.
QD_Fd caller(int from, int to = 1)
{
    QD_Fd fd = tcp_socket(from, 0);
    const sockaddr_in at {AF_INET, htons(QD_SIGNALLING_PORT), {qd_test_host(to)}, {}};
    ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&at), sizeof at);
    return fd;
}

bool ended(const QD_Fd& fd)
{
    char c = 0;
    return ::recv(fd.get(), &c, 1, MSG_DONTWAIT) == 0;
}

// A host that neither takes connections nor refuses them.
struct Silent_Host {
    explicit Silent_Host(int host) : listener(tcp_socket(host, QD_SIGNALLING_PORT))
    {
        ::listen(listener.get(), 0);
        for (QD_Fd& one : waiting) {
            one = caller(90, host);
            pollfd connected {one.get(), POLLOUT, 0};
            ::poll(&connected, 1, 100);
        }
    }
    QD_Fd listener;
    QD_Fd waiting[2];
};

class ListenerTest : public QD_Stream_Test {
protected:
    QD_Listener listener_ {&reactor_};
};

}

TEST_F(ListenerTest, ATakenPortIsOneClearLine)
{
    ASSERT_EQ(listener_.open(), 0);
    QD_Listener second(&reactor_);
    testing::internal::CaptureStderr();
    EXPECT_EQ(second.open(), -1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
        "QD_Listener: nobody can call: port 5000: Address already in use\n");
}

TEST_F(ListenerTest, SilentHostsHoldTheCallerOnceAndNoLongerThanASecond)
{
    ASSERT_EQ(listener_.open(), 0);
    const Silent_Host silent[] = {Silent_Host(2), Silent_Host(3), Silent_Host(4)};
    QD_Member members[] = {{"a", qd_test_host(2)}, {"b", qd_test_host(3)}, {"c", qd_test_host(1)},
        {"nobody listens", qd_test_host(9)}, {"e", qd_test_host(4)}};
    QD_Member* all[] = {members, members + 1, members + 2, members + 3, members + 4};
    auto start = QD_Clock::real().now();
    qd_connect_members(all, &reactor_, 500);
    EXPECT_LT(QD_Clock::real().now() - start, 1500ms) << "one limit for all, not one for each";
    for (const QD_Member& member : members)
        EXPECT_EQ(member.get_stream() != nullptr, member.get_host() == qd_test_host(1));
    for (const std::string& host :
        {qd_test_address(2), std::string("nobody.invalid"), std::string()}) {
        start = QD_Clock::real().now();
        EXPECT_EQ(session_->invite("user", host.c_str()), -1);
        EXPECT_LT(QD_Clock::real().now() - start, 1400ms) << host;
        session_->clear_failed_invitation();
    }
}

TEST_F(ListenerTest, OneHostTakesNoMoreThanItsPlacesAndAllNoMoreThanThere)
{
    ASSERT_EQ(listener_.open(), 0);
    std::vector<QD_Fd> in;
    const auto call = [&](int host, int times) {
        int let_in = 0;
        for (int i = 0; i < times; ++i) {
            QD_Fd one = caller(host);
            run();
            if (ended(one))
                continue;
            ++let_in;
            in.push_back(std::move(one));
        }
        return let_in;
    };
    EXPECT_EQ(call(5, 1000), QD_Listener::MAX_PER_HOST);
    EXPECT_EQ(call(6, 1), 1) << "others are let in";
    in.clear();
    run();
    int all = 0;
    for (int host = 10; host < 20; ++host)
        all += call(host, QD_Listener::MAX_PER_HOST);
    EXPECT_EQ(all, QD_Listener::MAX_STREAMS);
    in.erase(in.begin());
    run();
    EXPECT_EQ(call(20, 2), 1) << "a place that was given back";
}

TEST_F(ListenerTest, WithoutDescriptorsCallersAreSentAway)
{
    ASSERT_EQ(listener_.open(), 0);
    const QD_Fd zeroth = caller(5);
    run(); // a sanitizer needs descriptors, too, for what it has not seen before
    const QD_Fd first = caller(5);
    const QD_Fd second = caller(5);
    rlimit before {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const QD_Fd next(::dup(first.get()));
    const rlimit none {static_cast<rlim_t>(next.get()), before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    run(); // would go on for ever with a caller at the door
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_TRUE(ended(first));
    EXPECT_TRUE(ended(second));
    const QD_Fd third = caller(5);
    run();
    EXPECT_FALSE(ended(third));
}
