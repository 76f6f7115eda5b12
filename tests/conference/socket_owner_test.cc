#include "conference/socket_owner.h"

#include "platform/net/fd.h"

#include <csignal>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>

// The connecting process is the far end; another child, and the listening
// process itself, are not, though they belong to the same user.
TEST(SocketOwner, TellsTheConnectedProcessFromOthers)
{
    QD_Fd listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in here {};
    here.sin_family = AF_INET;
    here.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof here;
    ASSERT_EQ(::bind(listener.get(), reinterpret_cast<sockaddr*>(&here), size), 0);
    ASSERT_EQ(::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&here), &size), 0);
    ASSERT_EQ(::listen(listener.get(), 1), 0);

    pid_t children[2];
    for (pid_t& child : children) {
        child = ::fork();
        if (child == 0) {
            if (&child == &children[0]) {
                const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
                ::connect(fd, reinterpret_cast<sockaddr*>(&here), sizeof here);
            }
            for (;;)
                ::pause();
        }
    }
    QD_Fd accepted(::accept(listener.get(), nullptr, nullptr));
    EXPECT_TRUE(qd_far_end_is(accepted.get(), children[0]));
    EXPECT_FALSE(qd_far_end_is(accepted.get(), children[1]));
    EXPECT_FALSE(qd_far_end_is(accepted.get(), ::getpid()));
    EXPECT_FALSE(qd_far_end_is(listener.get(), children[0])); // no connection at all
    for (pid_t child : children) {
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
    }
    EXPECT_FALSE(qd_far_end_is(accepted.get(), children[0]));
}
