#include "signalling/options_file.h"

#include "tests/support/temp_dir.h"

#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

class OptionsFileTest : public testing::Test {
protected:
    OptionsFileTest() { setenv("HOME", home_.path().c_str(), 1); }

    std::string file() const { return home_.file(".qd.cfg"); }

    QD_Temp_Dir home_;
    _options options_;
};

}

TEST_F(OptionsFileTest, NoUsableHomeIsNoFile)
{
    setenv("HOME", ("/" + std::string(191, 'h')).c_str(), 1); // 200 characters with the name
    EXPECT_EQ(qd_write_options_file(options_), -1);
    EXPECT_EQ(qd_read_options_file(&options_), -1);
    setenv("HOME", "/nowhere", 1);
    EXPECT_EQ(qd_write_options_file(options_), -1);
    unsetenv("HOME");
    EXPECT_EQ(qd_write_options_file(options_), -1);
    EXPECT_EQ(qd_read_options_file(&options_), -1);
}

TEST_F(OptionsFileTest, AFullDiskLeavesTheOldFile)
{
    ASSERT_EQ(qd_write_options_file(options_), 0);
    const std::string before = qd_read_file(file());
    options_.volume = 1;
    signal(SIGXFSZ, SIG_IGN);
    rlimit old {};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit full {100, old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_EQ(qd_write_options_file(options_), -1);
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_EQ(qd_read_file(file()), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home_.path()), {}), 1);
}
