// Every way in which a real client ends.
#include "tests/support/client_under_test.h"
#include "tests/support/udp_peer.h"
#include "tests/support/x_server.h"

#include <cstdlib>
#include <future>
#include <gtest/gtest.h>
#include <random>
#include <sys/stat.h>

namespace {

using Client = QD_Client_Under_Test;
using Milliseconds = std::chrono::milliseconds;

// The options are whole, and no sanitizer has anything to say.
void expect_left_in_order(const Client& client)
{
    EXPECT_EQ(qd_read_file(client.file(".qd.cfg")).size(), 280u);
    EXPECT_EQ(client.log().find("Sanitizer"), std::string::npos) << client.log();
    EXPECT_EQ(client.log().find("does not end"), std::string::npos) << client.log();
}

void send(Client& client, const std::string& bytes)
{
    client.framework().send(std::string("\0\0\0\1", 4) + bytes);
}

bool has_hung_up(Client& client)
{
    pollfd link {client.framework().descriptor(), POLLIN, 0};
    return ::poll(&link, 1, 0) > 0;
}

}

TEST(Shutdown, EveryWayOutEndsCleanly)
{
    QD_X_Server x_server;
    x_server.manage();
    const auto press = [](const Client& client, const char* keys) {
        QD_Person person(client);
        ASSERT_TRUE(person.look_at("Quendal"));
        person.press(keys);
    };
    struct {
        const char* why;
        std::function<void(Client&)> way;
        int status;
    } const ways[] = {
        {"the menu's key", [&](Client& client) { press(client, "ctrl+q"); }, 0},
        {"the window manager's key", [&](Client& client) { press(client, "alt+F4"); }, 0},
        {"the framework", [](Client& client) { client.framework().end_session(); }, 0},
        {"a signal", [](Client& client) { kill(client.pid(), SIGTERM); }, 0},
        {"a link that closes", [](Client& client) { client.framework().close_link(); }, 1},
        {"one that breaks", [](Client& client) { send(client, "\xff\xff\xff\xff"); }, 1},
        {"one that stalls in an event", [](Client& client) { send(client, "\1\1"); }, 1},
        {"one that dribbles",
            [](Client& client) {
                send(client, std::string("\0\1\0\0", 4)); // 65,536 bytes, one a millisecond
                EXPECT_TRUE(qd_wait_for(
                    [&] {
                        client.framework().send("x");
                        return has_hung_up(client);
                    },
                    std::chrono::seconds(8)));
            },
            1},
    };
    for (const auto& c : ways) {
        SCOPED_TRACE(c.why);
        Client client(2, {});
        ASSERT_TRUE(client.meets({2}));
        c.way(client);
        EXPECT_EQ(client.wait(), c.status);
        expect_left_in_order(client);
        EXPECT_EQ(client.log().find("QD_AudioApp: sent ") != std::string::npos, c.status == 0);
    }
}

TEST(Shutdown, AStartThatFailsSaysWhyAndLeavesTheOptionsAlone)
{
    const QD_X_Server x_server;
    const QD_Temp_Dir home;
    const std::string start = "HOME=" + home.path() + " " QD_BUILD_DIR "/quendal ";
    std::string said = qd_output(start + "2>&1; echo $?");
    EXPECT_TRUE(said.starts_with("invalid arguments: ") && said.ends_with("\n0\n")) << said;
    said = qd_output(start + "1 2 3 1 2>&1; echo $?");
    EXPECT_TRUE(said.starts_with("connect: ") && said.ends_with("\n0\n")) << said;
    EXPECT_TRUE(std::filesystem::is_empty(home.path()));
}

namespace {

/// One end by signals at random moments, of which one at least asks for it; every third process
/// is stopped on the way, for longer than any thread is waited for.
void end_at_random(unsigned seed, int host)
{
    std::minstd_rand random(seed);
    const auto pause = [&](unsigned most_ms) {
        std::this_thread::sleep_for(Milliseconds(random() % (most_ms + 1)));
    };
    Client client(host, {.mic = "tone:440"});
    ASSERT_TRUE(client.meets({host, 2 + 9}));
    constexpr int SIGNALS[] = {SIGTERM, SIGHUP, SIGINT, SIGCHLD};
    pause(100);
    kill(client.pid(), SIGNALS[random() % 3]);
    for (int i = 0; i < 3; ++i) {
        pause(30);
        kill(client.pid(), SIGNALS[random() % 4]);
    }
    if (seed % 3 == 0) {
        kill(client.pid(), SIGSTOP);
        pause(3000);
        kill(client.pid(), SIGCONT);
    }
    pause(1200);
    kill(client.pid(), SIGNALS[random() % 4]);
    EXPECT_EQ(client.wait(), 0) << client.log();
    expect_left_in_order(client);
}

}

// QD_ENDS says how many, else 24.
TEST(Shutdown, SignalsAtAnyMomentChangeNothing)
{
    const QD_X_Server x_server;
    constexpr int AT_ONCE = 4;
    const char* const wanted = getenv("QD_ENDS");
    const int ends = wanted != nullptr ? atoi(wanted) : 24;
    std::atomic<int> next = 0;
    std::vector<std::future<void>> lanes;
    for (int lane = 0; lane < AT_ONCE; ++lane)
        lanes.push_back(std::async(std::launch::async, [&, lane] {
            for (int i = next++; i < ends; i = next++) {
                SCOPED_TRACE(testing::Message() << "end " << i);
                end_at_random(static_cast<unsigned>(i + 1), 2 + lane);
            }
        }));
}

TEST(Shutdown, SignalsThatWereIgnoredAtTheStartStaySo)
{
    const QD_X_Server x_server;
    for (int ignored : {SIGHUP, SIGINT})
        signal(ignored, SIG_IGN);
    Client client(2, {});
    for (int ignored : {SIGHUP, SIGINT})
        signal(ignored, SIG_DFL);
    ASSERT_TRUE(client.meets({2}));
    kill(client.pid(), SIGHUP); // as when a terminal closes that nohup has been used in
    kill(client.pid(), SIGINT);
    EXPECT_TRUE(client.framework().settle());
    kill(client.pid(), SIGTERM);
    EXPECT_EQ(client.wait(), 0);
}

TEST(Shutdown, ADisplayThatIsLostOrStandsStillHoldsNothingUp)
{
    constexpr int EITHER = -1;
    struct {
        const char* why;
        bool stands_still; // first
        bool asked;        // to end, before the display is lost
        bool lost;
        int status;
    } const cases[] = {
        {"lost in the middle of a conference", false, false, true, 1},
        {"lost while everything is taken down", true, true, true, EITHER},
        {"not served at the end", true, true, false, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.why);
        auto x_server = std::make_unique<QD_X_Server>();
        Client client(2, {});
        ASSERT_TRUE(client.meets({2, 3}));
        const QD_Udp_Peer member(qd_test_host(3), 34999);
        std::string picture(12, '\0'); // with a window, which goes with its member
        picture[0] = '\x80';
        picture[1] = 3;
        picture[11] = 3;
        member.send(picture, qd_test_host(2));
        EXPECT_TRUE(QD_Person(client).look_at("m3"));
        if (c.stands_still)
            x_server->stop();
        if (c.asked)
            client.framework().end_session();
        if (c.lost)
            x_server.reset();
        const auto status = client.wait();
        const bool done_before = c.status == EITHER && status == 0; // with the display
        EXPECT_TRUE(done_before || status == std::abs(c.status)) << client.log();
        expect_left_in_order(client);
    }
}

namespace {

/// A pipe with next to no room.
struct Pipe {
    Pipe(const std::string& path)
    {
        ::mkfifo(path.c_str(), 0600);
        end = QD_Fd(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
        ::fcntl(end.get(), F_SETPIPE_SZ, 4096);
        while (::write(end.get(), ".", 1) == 1) {}
    }
    std::string read() const
    {
        std::string text(4096, '\0');
        const ssize_t n = ::read(end.get(), text.data(), text.size());
        text.resize(n > 0 ? static_cast<size_t>(n) : 0);
        return text;
    }
    QD_Fd end;
};

}

TEST(Shutdown, APipeThatNobodyReadsHoldsNothingUpAndIsReadWholeLater)
{
    const QD_X_Server x_server;
    const QD_Temp_Dir dir;
    const Pipe pipe(dir.file("pipe"));
    Client client(2, {.mic = "nonsense", .out = dir.file("pipe")}); // which it complains about
    ASSERT_TRUE(client.meets({2, 3}));
    std::string read = pipe.read();
    EXPECT_EQ(read, std::string(4096, '.'));
    read = "";
    EXPECT_TRUE(qd_wait_for([&] { return (read += pipe.read()).find("QD_MIC=nonsense") + 1 > 0; }));
    while (::write(pipe.end.get(), ".", 1) == 1) {}
    EXPECT_EQ(client.end(), 0) << "even so";
}
