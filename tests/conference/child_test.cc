#include "conference/child.h"

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <sstream>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

std::string contents(const std::string& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

bool has_ended(QD_Child& child)
{
    pollfd polled {child.get(), POLLIN, 0};
    return ::poll(&polled, 1, 30000) == 1 && child.take_end();
}

TEST(Child, RunsInItsOwnSurroundings)
{
    ::setenv("QD_TEST_KEPT", "kept", 1);
    ::setenv("QD_TEST_CHANGED", "old", 1);
    const std::string log = testing::TempDir() + "child-log-" + std::to_string(::getpid());
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
    EXPECT_EQ(contents(log), "/usr\nkept new\n" + pid + "\n" + pid + "\n");
    EXPECT_EQ(child.how_it_ended(), "exit status 3");
    EXPECT_FALSE(child.ended_well());

    launch.program_ = "/nowhere/program";
    ASSERT_EQ(child.start(launch), 0);
    ASSERT_TRUE(has_ended(child));
    EXPECT_EQ(child.how_it_ended(), "exit status 127");
    EXPECT_EQ(contents(log), "cannot run /nowhere/program: No such file or directory\n");
    ::unlink(log.c_str());
}

// The pipe ends with the last process that holds it: the shell's own child.
TEST(Child, ASignalReachesWhatTheChildHasStarted)
{
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    QD_Launch launch;
    launch.program_ = "/bin/sh";
    launch.arguments_ = {"-c", "sleep 1000 & echo ready >&" + std::to_string(ends[1]) + "; wait"};
    QD_Child child;
    ASSERT_EQ(child.start(launch), 0);
    ::close(ends[1]);
    char ready[8];
    ASSERT_EQ(::read(ends[0], ready, sizeof ready), 6);
    child.signal(SIGKILL);
    EXPECT_TRUE(has_ended(child));
    pollfd polled {ends[0], POLLIN, 0};
    EXPECT_EQ(::poll(&polled, 1, 30000), 1);
    EXPECT_EQ(::read(ends[0], ready, 1), 0);
    ::close(ends[0]);
}

// A parent that is killed takes its children along, even those it told nothing.
TEST(Child, DoesNotOutliveItsParent)
{
    int report[2];
    ASSERT_EQ(::pipe(report), 0);
    const pid_t parent = ::fork();
    if (parent == 0) {
        QD_Launch launch;
        launch.program_ = "/bin/sleep";
        launch.arguments_ = {"1000"};
        QD_Child child; // inherits the pipe, which so ends with the last of them
        child.start(launch);
        [[maybe_unused]] ssize_t ignored = ::write(report[1], "!", 1);
        for (;;)
            ::pause();
    }
    ::close(report[1]);
    char byte = 0;
    ASSERT_EQ(::read(report[0], &byte, 1), 1);
    ::kill(parent, SIGKILL);
    ::waitpid(parent, nullptr, 0);
    pollfd polled {report[0], POLLIN, 0};
    EXPECT_EQ(::poll(&polled, 1, 30000), 1);
    EXPECT_EQ(::read(report[0], &byte, 1), 0);
    ::close(report[0]);
}

}
