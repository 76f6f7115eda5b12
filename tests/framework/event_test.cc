#include "framework/event.h"

#include "platform/net/fd.h"
#include "tests/support/framework.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <vector>

namespace {

struct Link {
    Link()
    {
        int ends[2];
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends);
        application.reset(ends[0]);
        framework.reset(ends[1]);
    }

    void say(const std::string& bytes) const
    {
        ASSERT_EQ(::send(framework.get(), bytes.data(), bytes.size(), 0),
            static_cast<ssize_t>(bytes.size()));
    }

    std::string hear(size_t bytes) const
    {
        std::string got(bytes, '\0');
        const ssize_t n = ::recv(framework.get(), got.data(), bytes, MSG_WAITALL);
        got.resize(n > 0 ? static_cast<size_t>(n) : 0);
        return got;
    }

    QD_Fd application, framework;
};

int launch(std::initializer_list<const char*> arguments)
{
    std::vector<char*> argv;
    for (const char* argument : arguments)
        argv.push_back(const_cast<char*>(argument));
    const int argc = static_cast<int>(argv.size());
    argv.push_back(nullptr);
    return registerApp(argc, argv.data());
}

}

TEST(Event, RegistersWithTheLaunchArgumentsBigEndian)
{
    QD_Test_Framework framework;
    QD_Fd link(launch({"quendal", "1", "-2", "no number", framework.port().c_str()}));
    ASSERT_GT(link.get(), 2);
    EXPECT_NE(fcntl(link.get(), F_GETFD) & FD_CLOEXEC, 0);
    EXPECT_EQ(framework.accept(), std::string("\0\0\0\1\xff\xff\xff\xfe\0\0\0\0", 12));
}

TEST(EventDeathTest, EveryFailureHasItsMessageAndStatus)
{
    const auto status = [](int code) { return testing::ExitedWithCode(code); };
    EXPECT_EXIT(launch({"quendal"}), status(0), "invalid arguments: ");
    EXPECT_EXIT(launch({"quendal", "1", "2", "3", "4", "5"}), status(0), "invalid arguments: ");
    const char* const names[] = {
        "null AID argument: ", "null SID argument: ", "null AT argument: ", "null port argument: "};
    for (size_t missing = 0; missing < 4; ++missing) {
        const char* arguments[] = {"quendal", "1", "2", "3", "4"};
        arguments[missing + 1] = nullptr;
        EXPECT_EXIT(registerApp(5, const_cast<char**>(arguments)), status(0), names[missing]);
    }
    EXPECT_EXIT(launch({"quendal", "1", "2", "3", "1"}), status(0), "connect: ");
    const auto without_descriptors = [] {
        static rlimit limit {};
        getrlimit(RLIMIT_NOFILE, &limit);
        const rlimit none {0, limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
        atexit([] { setrlimit(RLIMIT_NOFILE, &limit); }); // a sanitizer's last look needs some
        launch({"quendal", "1", "2", "3", "1"});
    };
    EXPECT_EXIT(without_descriptors(), status(0), "socket: ");

    const auto write_to_nobody = [] {
        Link link;
        link.framework.reset();
        const Event event {1, 0, nullptr};
        sendEvent(link.application.get(), &event);
    };
    EXPECT_EXIT(write_to_nobody(), status(0), "write: ");
    EXPECT_EXIT(receiveEvent(-1), status(1), "readAll: ");
    const auto closed_in_the_middle = [] {
        Link link;
        link.say(std::string("\0\0\0\1\0\0\0\5half", 12));
        link.framework.reset();
        receiveEvent(link.application.get());
    };
    EXPECT_EXIT(closed_in_the_middle(), status(1), "^$");
}

TEST(EventDeathTest, LengthsBeyondTheBoundEndTheLinkAsAFailedRead)
{
    for (const char* length : {"\xff\xff\xff\xff", "\x80\0\0\0", "\0\1\0\1", "\x7f\xff\xff\xff"}) {
        const auto announce = [&] {
            Link link;
            link.say(std::string("\0\0\0\1", 4) + std::string(length, 4));
            receiveEvent(link.application.get());
        };
        EXPECT_EXIT(announce(), testing::ExitedWithCode(1), "readAll: Message too long");
    }
}

TEST(Event, ArrivesInPiecesOfAnySizeUpToTheBound)
{
    Link link;
    const std::string longest(Event::MAX_LEN, 'x');
    std::thread framework([&] {
        for (char byte : std::string("\0\0\0\7\0\0\0\3abc", 11))
            link.say({byte});
        link.say(std::string("\xff\xff\xff\xff\0\0\0\0", 8));
        link.say(std::string("\0\0\0\1\0\1\0\0", 8) + longest);
    });
    struct {
        int type;
        std::string payload;
    } const expected[] = {{7, "abc"}, {-1, ""}, {1, longest}};
    for (const auto& [type, payload] : expected) {
        Event* event = receiveEvent(link.application.get());
        EXPECT_EQ(getType(event), type);
        ASSERT_EQ(getLen(event), static_cast<int>(payload.size()));
        char* copy = getData(event);
        EXPECT_NE(copy, event->data);
        EXPECT_TRUE(std::string(copy, payload.size()) == payload);
        delete[] copy;
        destroyEvent(event);
    }
    framework.join();
}

TEST(Event, AnEchoRequestGoesBackByteForByteBeforeItIsReturned)
{
    for (const std::string& payload : {std::string("ping\0\xff", 6), std::string()}) {
        Link link;
        std::string wire("\0\0\0\x33\0\0\0", 7);
        wire += static_cast<char>(payload.size());
        wire += payload;
        link.say(wire);
        Event* event = receiveEvent(link.application.get());
        EXPECT_EQ(getType(event), Event::ECHO);
        EXPECT_EQ(link.hear(wire.size()), wire);
        destroyEvent(event);
    }
}
