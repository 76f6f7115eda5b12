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

// A connection from `from`, which the system makes without the listener's doing, or does not.
QD_Fd caller(int from, int to = 1)
{
    QD_Fd fd = tcp_socket(from, 0);
    const sockaddr_in at {AF_INET, htons(QD_SIGNALLING_PORT), {qd_test_host(to)}, {}};
    ::connect(fd.get(), reinterpret_cast<const sockaddr*>(&at), sizeof at);
    pollfd connected {fd.get(), POLLOUT, 0};
    ::poll(&connected, 1, 100);
    return fd;
}

bool ended(const QD_Fd& fd)
{
    char c = 0;
    return ::recv(fd.get(), &c, 1, MSG_DONTWAIT) == 0;
}

class ListenerTest : public QD_Stream_Test {
protected:
    ListenerTest() { EXPECT_EQ(listener_.open(), 0); }
    QD_Listener listener_ {&reactor_};
};

}

TEST_F(ListenerTest, SilentHostsHoldTheCallerOnceAndNoLongerThanASecond)
{
    const QD_Fd silent = tcp_socket(2, QD_SIGNALLING_PORT);
    ::listen(silent.get(), 0);
    const QD_Fd waiting[] = {caller(90, 2), caller(90, 2)}; // nor does it refuse the next
    QD_Member members[] = {{"a", qd_test_host(2)}, {"b", qd_test_host(2)}, {"c", qd_test_host(1)},
        {"nobody listens", qd_test_host(9)}};
    QD_Member* all[] = {members, members + 1, members + 2, members + 3};
    auto start = QD_Clock::real().now();
    qd_connect_members(all, &reactor_, 700);
    EXPECT_LT(QD_Clock::real().now() - start, 1400ms) << "one limit for all, not one for each";
    for (const QD_Member& member : members)
        EXPECT_EQ(member.get_stream() != nullptr, member.get_host() == qd_test_host(1));
    start = QD_Clock::real().now();
    EXPECT_EQ(session_->invite("user", qd_test_address(2).c_str()), -1);
    EXPECT_LT(QD_Clock::real().now() - start, 1400ms);
}

TEST_F(ListenerTest, OneHostTakesNoMoreThanItsPlacesAndAllNoMoreThanThere)
{
    std::vector<QD_Fd> in;
    const auto call = [&](int host, int times) {
        const size_t before = in.size();
        for (int i = 0; i < times; ++i) {
            in.push_back(caller(host));
            run();
            if (ended(in.back()))
                in.pop_back();
        }
        return static_cast<int>(in.size() - before);
    };
    EXPECT_EQ(call(5, 100), QD_Listener::MAX_PER_HOST);
    in.clear();
    run();
    for (int host = 10; host < 20; ++host)
        call(host, QD_Listener::MAX_PER_HOST);
    EXPECT_EQ(in.size(), size_t {QD_Listener::MAX_STREAMS});
    in.pop_back();
    run();
    EXPECT_EQ(call(20, 2), 1) << "a place that was given back";
}

TEST_F(ListenerTest, WithoutDescriptorsCallersAreSentAway)
{
    const QD_Fd zeroth = caller(5);
    run(); // a sanitizer needs descriptors, too, for what it has not seen before
    const QD_Fd late[] = {caller(5), caller(5)};
    rlimit before {};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const QD_Fd next(::dup(zeroth.get()));
    const rlimit none {static_cast<rlim_t>(next.get()), before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    run(); // would go on for ever with a caller at the door
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_TRUE(ended(late[0]) && ended(late[1]));
}
