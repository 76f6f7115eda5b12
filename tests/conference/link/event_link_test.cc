#include "conference/link/event_link.h"

#include <gtest/gtest.h>
#include <sys/socket.h>

namespace {

class EventLink : public testing::Test {
protected:
    EventLink()
    {
        int fds[2];
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, fds), 0);
        link_ = std::make_unique<QD_Event_Link>(QD_Fd(fds[0]));
        client_.reset(fds[1]);
    }

    void arrives(const QD_Bytes& bytes)
    {
        ASSERT_GT(::write(client_.get(), bytes.data(), bytes.size()), 0);
        ASSERT_EQ(link_->read(), 1);
    }

    std::unique_ptr<QD_Event_Link> link_;
    QD_Fd client_;
    QD_Event_Link::Received event_;
};

TEST_F(EventLink, HoldsNoMoreThanTheLongestEvent)
{
    QD_Bytes longest {0, 0, 0, 1, 0, 1, 0, 0};
    longest.resize(8 + 65536, 7);
    arrives(longest);
    ASSERT_EQ(link_->take_event(event_), 1);
    EXPECT_EQ(event_.payload, QD_Bytes(65536, 7));
    arrives({0, 0, 0, 1, 0, 1, 0, 1});
    EXPECT_EQ(link_->take_event(event_), -1);
    arrives(QD_Bytes(200000, 1)); // and nobody takes it
    EXPECT_EQ(link_->read(), -1);
}

TEST_F(EventLink, QueuesForAClientThatDoesNotReadUpToABound)
{
    const QD_Bytes payload(1000, 5);
    size_t accepted = 0;
    while (link_->send(1, payload) == 0)
        ASSERT_LT(++accepted, 100000U);
    EXPECT_TRUE(link_->wants_write());

    // What was accepted arrives whole once the client reads; the refused event does not.
    size_t arrived = 0;
    uint8_t buffer[4096];
    for (ssize_t got = 0; (got = ::read(client_.get(), buffer, sizeof buffer)) > 0;) {
        arrived += static_cast<size_t>(got);
        ASSERT_EQ(link_->flush(), 0);
    }
    EXPECT_EQ(arrived, accepted * 1008);
    EXPECT_FALSE(link_->wants_write());
}

}
