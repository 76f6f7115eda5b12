// The demo as people run it: three members, and everybody's picture on everybody's screen.
#include "platform/vl/test_card.h"
#include "tests/support/process.h"
#include "tests/support/screen.h"
#include "tests/support/temp_dir.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

TEST(Demo, EverybodyIsHeardAndSeenByEverybody)
{
    QD_X_Server x_server("1430x1140x24");
    x_server.manage();
    const QD_Temp_Dir dir;
    // A shot of every window that is named after a member: NAME-NUMBER.
    const std::string shots = "for name in anna bernt chiara; do for window in $(xdotool search"
                              " --onlyvisible --name ^$name@); do import -window $window" QD_SHOT
        + dir.path() + "/$name-$window; done; done";
    const int status
        = qd_run({QD_BUILD_DIR "/quendal-conference", "demo", "--seconds", "8", "--dir",
                     dir / "demo", "--screen", "1430x1140", "--before-end", shots},
            {.out = dir / "table"});
    const std::string table = qd_read_file(dir / "table");
    EXPECT_EQ(status, 0) << table;
    EXPECT_TRUE(std::filesystem::exists(dir / "demo/heard/anna-hears-bernt.wav"));

    const char* const names[] = {"anna", "bernt", "chiara"};
    for (int member = 0; member < 3; ++member) {
        int seen = 0;
        for (const auto& entry : std::filesystem::directory_iterator(dir.path())) {
            if (!entry.path().filename().string().starts_with(names[member] + std::string("-")))
                continue;
            EXPECT_TRUE(qd_shows_card(qd_read_file(entry.path()), 120 * member)) << entry.path();
            ++seen;
        }
        EXPECT_EQ(seen, 3) << names[member] << "\n" << table;
    }
}
