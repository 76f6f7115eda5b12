#include "framework/link/event.h"

#include "tests/support/stream_pair.h"

#include <gtest/gtest.h>
#include <thread>

TEST(EventDeathTest, LengthsBeyondTheBoundEndTheLinkAsAFailedRead)
{
    for (const char* length : {"\xff\xff\xff\xff", "\x80\0\0\0", "\0\1\0\1"}) {
        const QD_Stream_Pair link;
        link.send(std::string(4, '\0') + std::string(length, 4));
        EXPECT_EXIT(receiveEvent(link.stream.get_handle()), testing::ExitedWithCode(1),
            "readAll: Message too long");
    }
}

TEST(Event, ArrivesInPiecesOfAnySizeUpToTheBound)
{
    const QD_Stream_Pair link;
    const std::string whole
        = std::string("\xff\xff\xff\xff\0\1\0\0", 8) + std::string(Event::MAX_LEN, 'x');
    std::thread framework([&] {
        for (const char byte : whole.substr(0, 20))
            link.send({byte});
        link.send(whole.substr(20));
    });
    Event* event = receiveEvent(link.stream.get_handle());
    framework.join();
    EXPECT_EQ(getType(event), -1);
    EXPECT_TRUE(std::string(event->data, static_cast<size_t>(getLen(event))) == whole.substr(8));
    destroyEvent(event);
}
