// What `make install` puts into a prefix works from there.
#include "tests/support/process.h"
#include "tests/support/temp_dir.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

TEST(Install, ClientsRunFromThePrefixAndTakeItsApplicationDefaults)
{
    const QD_Temp_Dir dir; // which DESTDIR hides from the machine
    ASSERT_EQ(qd_run({"cmake", "--install", QD_BUILD_DIR, "--prefix", "/qd"},
                  {.out = dir.file("log"), .environment = {{"DESTDIR", dir.path()}}}),
        0)
        << qd_read_file(dir.file("log"));
    const QD_X_Server x_server;
    std::ofstream(dir.file("qd/share/X11/app-defaults/Application"), std::ios::app)
        << "*showStatistics: True\n*statWindow.title: Installed figures\n";
    QD_Process conference(
        {dir.file("qd/bin/quendal-conference"), "run", "--dir", dir.file("members"), "anna"},
        {.out = dir.file("log"), .environment = {{"QD_MIC", "silence"}, {"QD_SPEAKER", "null"}}});
    EXPECT_EQ(qd_run({"timeout", "60", "xdotool", "search", "--sync", "--onlyvisible", "--name",
                  "^Installed figures$"}),
        0)
        << qd_read_file(dir.file("log"));
    conference.tell("end\n");
    EXPECT_EQ(conference.wait(std::chrono::seconds(60)), 0) << qd_read_file(dir.file("log"));
}
