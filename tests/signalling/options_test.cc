#include "signalling/options.h"

#include "signalling/options_file.h"
#include "tests/support/temp_dir.h"

#include <array>
#include <csignal>
#include <cstring>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace {

using Image = std::array<uint8_t, _options::IMAGE_SIZE>;

// Written by hand: every field at its offset, big-endian.
Image image_by_hand()
{
    Image image {};
    const auto put = [&](size_t at, const std::string& bytes) {
        memcpy(&image[at], bytes.data(), bytes.size());
    };
    image[3] = 3; // the connection
    put(8, "anna");
    put(58, "anna@example.org");
    put(158, "server.example.org");
    put(260, std::string("\0\0\0\1\0\0\0\xff\0\0\1\2\xff\xff\xff\xff\x12\x34\x56\x78", 20));
    return image;
}

}

TEST(Options, AgreeWithTheFileImageBothWays)
{
    const _options options = _options::decode(image_by_hand());
    EXPECT_EQ(options.connection, _lan);
    EXPECT_EQ(options.auto_accept, 0);
    EXPECT_STREQ(options.local_name, "anna");
    EXPECT_STREQ(options.email, "anna@example.org");
    EXPECT_STREQ(options.server_name, "server.example.org");
    EXPECT_EQ(options.manual_switch, 1);
    EXPECT_EQ(options.volume, 255);
    EXPECT_EQ(options.mic_volume, 258);
    EXPECT_EQ(options.fps_max, -1);
    EXPECT_EQ(options.mic_cutoff, 0x12345678);

    Image out;
    out.fill(0xaa);
    options.encode(out);
    EXPECT_EQ(out, image_by_hand());
}

TEST(Options, TextsWithoutAnEndAreCutAndPaddingIsZero)
{
    Image full;
    full.fill('x');
    const _options options = _options::decode(full);
    EXPECT_EQ(strlen(options.local_name), 49u);
    EXPECT_EQ(strlen(options.email), 99u);
    EXPECT_EQ(strlen(options.server_name), 99u);
    Image out;
    options.encode(out);
    EXPECT_EQ(out[57] + out[258] + out[259], 0);
}

TEST(OptionsFile, NoUsableHomeIsNoFile)
{
    const std::string too_long = "/" + std::string(191, 'h'); // 200 characters with the name
    _options options;
    for (const char* home : {too_long.c_str(), "/nowhere"}) {
        setenv("HOME", home, 1);
        EXPECT_EQ(qd_write_options_file(options), -1);
        EXPECT_EQ(qd_read_options_file(&options), -1);
    }
    unsetenv("HOME");
    EXPECT_EQ(qd_write_options_file(options), -1);
    EXPECT_EQ(qd_read_options_file(&options), -1);
}

TEST(OptionsFile, AFullDiskLeavesTheOldFile)
{
    const QD_Temp_Dir home;
    setenv("HOME", home.path().c_str(), 1);
    _options options;
    ASSERT_EQ(qd_write_options_file(options), 0);
    const std::string before = qd_read_file(home.file(".qd.cfg"));
    options.volume = 1;
    signal(SIGXFSZ, SIG_IGN);
    rlimit old {};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit full {100, old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
    EXPECT_EQ(qd_write_options_file(options), -1);
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_EQ(qd_read_file(home.file(".qd.cfg")), before);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.path()), {}), 1);
}
