#include "framework/event.h"

#include "platform/net/fd.h"

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

TEST(EventDeathTest, EveryFailureHasItsMessageAndStatus)
{
    const auto status = [](int code) { return testing::ExitedWithCode(code); };
    struct {
        std::initializer_list<const char*> arguments;
        const char* message;
    } const cases[] = {{{"quendal"}, "invalid arguments: "},
        {{"quendal", "1", "2", "3", "4", "5"}, "invalid arguments: "},
        {{"quendal", nullptr, "2", "3", "4"}, "null AID argument: "},
        {{"quendal", "1", nullptr, "3", "4"}, "null SID argument: "},
        {{"quendal", "1", "2", nullptr, "4"}, "null AT argument: "},
        {{"quendal", "1", "2", "3", nullptr}, "null port argument: "},
        {{"quendal", "1", "2", "3", "1"}, "connect: "}};
    for (const auto& c : cases)
        EXPECT_EXIT(launch(c.arguments), status(0), c.message);
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
        const std::unique_ptr<char[]> copy(getData(event));
        EXPECT_TRUE(std::string(copy.get(), payload.size()) == payload);
        destroyEvent(event);
    }
    framework.join();
}
