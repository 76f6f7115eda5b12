// What `make install` puts into a prefix works from there.
#include "tests/support/process.h"
#include "tests/support/temp_dir.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

/// Installed beneath a prefix of its own, which its DESTDIR hides from the machine.
class InstallTest : public testing::Test {
protected:
    void SetUp() override
    {
        QD_Surroundings quiet;
        quiet.out = dir_.file("install.log");
        quiet.environment = {{"DESTDIR", dir_.path()}};
        ASSERT_EQ(qd_run({"cmake", "--install", QD_BUILD_DIR, "--prefix", "/opt/qd"}, quiet), 0)
            << qd_read_file(quiet.out);
    }

    std::string installed(const std::string& name) const { return dir_ / "opt/qd/" + name; }

    QD_Temp_Dir dir_;
};

}

TEST_F(InstallTest, ClientsRunFromThePrefixAndTakeItsApplicationDefaults)
{
    QD_X_Server x_server;
    std::ofstream(installed("share/X11/app-defaults/Application"), std::ios::app)
        << "*showStatistics: True\n*statWindow.title: Installed figures\n";
    QD_Surroundings set_up;
    set_up.out = dir_.file("log");
    set_up.environment = {{"QD_MIC", "silence"}, {"QD_SPEAKER", "null"}};
    QD_Process conference(
        {installed("bin/quendal-conference"), "run", "--dir", dir_.file("members"), "anna"},
        set_up);
    EXPECT_EQ(qd_run({"timeout", "60", "xdotool", "search", "--sync", "--onlyvisible", "--name",
                  "^Installed figures$"}),
        0)
        << qd_read_file(set_up.out);
    conference.tell("end\n");
    EXPECT_EQ(conference.wait(std::chrono::seconds(60)), 0) << qd_read_file(set_up.out);
}
