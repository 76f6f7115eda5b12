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

TEST_F(ListenerTest, OneHostTakesNoMoreThanItsPlacesAndTheIdlestMakesRoom)
{
    std::vector<QD_Fd> in;
    const auto call = [&](int host, int times) {
        for (int i = 0; i < times; ++i) {
            in.push_back(caller(host));
            run();
        }
    };
    const auto say = [&](const QD_Fd& fd, int tag, int id) {
        const uint32_t address = qd_test_host(id);
        const std::string message = qd_header_image(
            tag, id, "x", {reinterpret_cast<const char*>(&address), sizeof address}, 0);
        EXPECT_EQ(::send(fd.get(), message.data(), message.size(), MSG_NOSIGNAL), 56);
        run();
    };
    const auto open = [&] {
        return static_cast<int>(
            std::count_if(in.begin(), in.end(), [](const QD_Fd& fd) { return !ended(fd); }));
    };
    call(5, QD_Places::MAX_PER_HOST);
    say(in[0], 3, 5); // a member
    say(in[1], 7, 5); // has said something since
    call(5, 14);
    EXPECT_EQ(open(), int {QD_Places::MAX_PER_HOST});
    EXPECT_FALSE(ended(in[0]) || ended(in[1]));
    call(5, 1);
    EXPECT_TRUE(ended(in[1]) && !ended(in[0]));
    for (int host = 10; host < 20; ++host)
        call(host, QD_Places::MAX_PER_HOST);
    EXPECT_EQ(open(), int {QD_Places::MAX_STREAMS});
    EXPECT_FALSE(ended(in[0]) || ended(in.back()));

    for (int i = 1; i < QD_Places::MAX_STREAMS; ++i) {
        call(30 + i / QD_Places::MAX_PER_HOST, 1);
        say(in.back(), 3, 50 + i);
    }
    call(200, 1);
    EXPECT_TRUE(ended(in.back())) << "members keep their places";
}

TEST(ListenerPolicyTest, OthersThanThoseWhoMayCallAreClosedAtOnce)
{
    const struct {
        std::string calls;
        bool listens, admits[2]; // hosts 5 and 6
        const char* said = "";
    } cases[] = {
        {"", true, {true, true}},
        {"all", true, {true, true}},
        {"none", false, {false, false}},
        {"10.0.0.0/8," + qd_test_address(5), true, {true, false}},
        {qd_test_address(5) + "/30", true, {true, true}},
        {qd_test_address(9) + "/0", true, {true, true}},
        {"10.0.0.0/33", true, {true, true}, "QD_CALLS=10.0.0.0/33: neither "},
        {"some", true, {true, true}, "QD_CALLS=some: neither "},
        {"none,", true, {true, true}, "QD_CALLS=none,: neither "},
        {"1.2.3.4,,5.6.7.8", true, {true, true}, "QD_CALLS=1.2.3.4,,5.6.7.8: neither "},
    };
    struct Here : ListenerTest {
        using ListenerTest::run;
        using ListenerTest::session_;
        void TestBody() override {}
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.calls);
        setenv("QD_CALLS", c.calls.c_str(), 1);
        testing::internal::CaptureStderr();
        Here here;
        EXPECT_TRUE(testing::internal::GetCapturedStderr().starts_with(c.said));
        for (int i = 0; i < 2; ++i) {
            const QD_Fd fd = caller(5 + i);
            here.run();
            char byte = 0;
            const ssize_t got = ::recv(fd.get(), &byte, 1, MSG_DONTWAIT);
            EXPECT_EQ(got == -1 && errno == EAGAIN, c.admits[i]);
            EXPECT_EQ(got == -1 && errno == ECONNREFUSED, !c.listens);
        }
        const QD_Fd silent = tcp_socket(2, QD_SIGNALLING_PORT);
        ::listen(silent.get(), 1);
        EXPECT_EQ(here.session_->invite("user", qd_test_address(2).c_str()), c.listens ? 0 : -1);
    }
    unsetenv("QD_CALLS");
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
    if (sizeof QD_SANITIZED > 1)
        return; // it could not have one for itself, either
    // Where not even one can be had to send somebody away, the door stays shut for a while.
    const QD_Fd waiting = caller(6);
    const rlimit fewer {5, before.rlim_max}; // polling needs as many
    ::setrlimit(RLIMIT_NOFILE, &fewer);
    reactor_.wait(-1, 1);
    EXPECT_EQ(reactor_.dispatch(), 1);
    ::setrlimit(RLIMIT_NOFILE, &before);
    reactor_.wait(-1, 1);
    EXPECT_EQ(reactor_.dispatch(), 0) << "would go on for ever where they stay few";
    pass(1);
    const std::string message = qd_header_image(7, 0, "x", "host", 0);
    EXPECT_EQ(::send(waiting.get(), message.data(), message.size(), MSG_NOSIGNAL), 56);
    run();
    EXPECT_FALSE(ended(waiting));
}
