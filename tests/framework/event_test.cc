#include "framework/event.h"

#include "tests/support/stream_pair.h"

#include <gtest/gtest.h>
#include <thread>

namespace {

// The application's end of a link, and the framework's.
struct Link : QD_Stream_Pair {
    int application() const { return stream.get_handle(); }
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
        {{"quendal", "1", "2", "3", nullptr}, "null port argument: "},
        {{"quendal", "1", "2", "3", "1"}, "connect: "}};
    for (const auto& c : cases)
        EXPECT_EXIT(launch(c.arguments), status(0), c.message);
    const auto write_to_nobody = [] {
        Link link;
        link.peer.reset();
        const Event event {1, 0, nullptr};
        sendEvent(link.application(), &event);
    };
    EXPECT_EXIT(write_to_nobody(), status(0), "write: ");
    EXPECT_EXIT(receiveEvent(-1), status(1), "readAll: ");
    const auto closed_in_the_middle = [] {
        Link link;
        link.send(std::string("\0\0\0\1\0\0\0\5half", 12));
        link.peer.reset();
        receiveEvent(link.application());
    };
    EXPECT_EXIT(closed_in_the_middle(), status(1), "^$");
}

TEST(EventDeathTest, LengthsBeyondTheBoundEndTheLinkAsAFailedRead)
{
    for (const char* length : {"\xff\xff\xff\xff", "\x80\0\0\0", "\0\1\0\1", "\x7f\xff\xff\xff"}) {
        const auto announce = [&] {
            Link link;
            link.send(std::string("\0\0\0\1", 4) + std::string(length, 4));
            receiveEvent(link.application());
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
            link.send({byte});
        link.send(std::string("\xff\xff\xff\xff\0\0\0\0", 8));
        const std::string last = std::string("\0\0\0\1\0\1\0\0", 8) + longest;
        ::send(link.peer.get(), last.data(), last.size(), MSG_NOSIGNAL);
    });
    struct {
        int type;
        std::string payload;
    } const expected[] = {{7, "abc"}, {-1, ""}, {1, longest}};
    for (const auto& [type, payload] : expected) {
        Event* event = receiveEvent(link.application());
        EXPECT_EQ(getType(event), type);
        ASSERT_EQ(getLen(event), static_cast<int>(payload.size()));
        const std::unique_ptr<char[]> copy(getData(event));
        EXPECT_TRUE(std::string(copy.get(), payload.size()) == payload);
        destroyEvent(event);
    }
    framework.join();
}
