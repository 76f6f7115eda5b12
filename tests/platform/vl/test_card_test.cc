#include "platform/vl/test_card.h"

#include "tests/support/pictures.h"

#include <gtest/gtest.h>

namespace {

std::string card(int hue, long milliseconds)
{
    std::string picture(QD_PICTURE_SIZE, '\0');
    QD_Test_Card(hue).paint(milliseconds, picture.data());
    return picture;
}

}

TEST(TestCard, MovesAndTellsMembersApart)
{
    EXPECT_EQ(card(-90, 5), card(270, 5));
    EXPECT_NE(card(0, 1000).substr(QD_U_OFFSET), card(120, 1000).substr(QD_U_OFFSET));
    for (long at = 0; at < 86'400'000; at += 1'234'567)
        for (int hue : {0, 120, 359})
            EXPECT_LT(qd_psnr(card(hue, at).data(), card(hue, at + 1000).data()), 30)
                << "the block is elsewhere a second later";
}

TEST(TestCard, TheClockShowsTheTime)
{
    // The digits' field: only what the clock draws is as bright as its dots.
    const auto dots = [](long at, int digit) {
        const std::string picture = card(0, at);
        std::string shape;
        for (int dot = 0; dot < 15; ++dot) {
            const int place
                = (112 + dot / 3 * 4) * QD_PICTURE_WIDTH + 12 + digit * 16 + dot % 3 * 4;
            shape += picture[static_cast<size_t>(place)] == '\xeb' ? '#' : '.';
        }
        return shape;
    };
    const long at = (12L * 3600 + 34 * 60 + 50) * 1000; // 12:34:50
    EXPECT_EQ(dots(at, 0), ".#.##..#..#.###");
    EXPECT_EQ(dots(at, 4), "#.##.####..#..#");
}
