#include "conference/child.h"

#include "tests/support/temp_dir.h"

#include <csignal>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>

namespace {

bool becomes_readable(int fd)
{
    pollfd polled {fd, POLLIN, 0};
    return ::poll(&polled, 1, 30000) == 1;
}

bool has_ended(QD_Child& child) { return becomes_readable(child.get()) && child.take_end(); }

/// Whether everybody who can write to the pipe is gone.
bool ends(int pipe)
{
    char byte = 0;
    return becomes_readable(pipe) && ::read(pipe, &byte, 1) == 0;
}

TEST(Child, RunsInItsOwnSurroundings)
{
    ::setenv("QD_TEST_KEPT", "kept", 1);
    ::setenv("QD_TEST_CHANGED", "old", 1);
    const QD_Temp_Dir dir;
    const std::string log = dir.file("log");
    QD_Launch launch;
    launch.program_ = "/bin/sh";
    launch.arguments_ = {"-c",
        "pwd; echo $QD_TEST_KEPT $QD_TEST_CHANGED; cat; ps -o pgid= $$ | tr -d ' '; echo $$ >&2; "
        "exit 3"};
    launch.environment_ = {"QD_TEST_CHANGED=new"};
    launch.directory_ = "/usr";
    launch.log_ = log;
    QD_Child child;
    ASSERT_EQ(child.start(launch), 0);
    const std::string pid = std::to_string(child.pid());
    ASSERT_TRUE(has_ended(child));
    EXPECT_EQ(qd_read_file(log), "/usr\nkept new\n" + pid + "\n" + pid + "\n");
    EXPECT_EQ(child.how_it_ended(), "exit status 3");
    EXPECT_FALSE(child.ended_well());

    launch.program_ = "/nowhere/program";
    ASSERT_EQ(child.start(launch), 0);
    ASSERT_TRUE(has_ended(child));
    EXPECT_EQ(child.how_it_ended(), "exit status 127");
    EXPECT_EQ(qd_read_file(log), "cannot run /nowhere/program: No such file or directory\n");
}

// The pipe ends with the last process that holds it: the shell's own child.
TEST(Child, ASignalReachesWhatTheChildHasStarted)
{
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    QD_Launch launch;
    launch.program_ = "/bin/sh";
    launch.arguments_ = {"-c", "sleep 1000 & echo ready >&" + std::to_string(pipe[1]) + "; wait"};
    QD_Child child;
    ASSERT_EQ(child.start(launch), 0);
    ::close(pipe[1]);
    char ready[8];
    ASSERT_EQ(::read(pipe[0], ready, sizeof ready), 6);
    child.signal(SIGKILL);
    EXPECT_TRUE(has_ended(child));
    EXPECT_TRUE(ends(pipe[0]));
    ::close(pipe[0]);
}

// A parent that is killed takes its children along, even those it told nothing.
TEST(Child, DoesNotOutliveItsParent)
{
    int pipe[2];
    ASSERT_EQ(::pipe(pipe), 0);
    const pid_t parent = ::fork();
    if (parent == 0) {
        QD_Launch launch;
        launch.program_ = "/bin/sleep";
        launch.arguments_ = {"1000"};
        QD_Child child; // inherits the pipe, which so ends with the last of them
        child.start(launch);
        [[maybe_unused]] ssize_t ignored = ::write(pipe[1], "!", 1);
        for (;;)
            ::pause();
    }
    ::close(pipe[1]);
    char byte = 0;
    ASSERT_EQ(::read(pipe[0], &byte, 1), 1);
    ::kill(parent, SIGKILL);
    ::waitpid(parent, nullptr, 0);
    EXPECT_TRUE(ends(pipe[0]));
    ::close(pipe[0]);
}

}
