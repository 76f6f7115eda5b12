#include "platform/vl/link_coder.h"

#include "tests/support/pictures.h"

#include <gtest/gtest.h>
#include <numeric>

TEST(LinkCoder, FillsTheLinkAndNoSecondTakesTwiceItsShareBesideAnIntraPicture)
{
    constexpr int FPS = 10;
    for (const bool cuts : {false, true})
        for (const QD_Codec codec : {QD_Codec::H263, QD_Codec::H261})
            for (const double kbps : {60., 120.}) {
                QD_Link_Coder coder(codec);
                ASSERT_EQ(coder.open(kbps, FPS), 0);
                int bytes = 0;
                std::vector<int> predicted;
                for (int i = 0; i < 60; ++i) {
                    const bool intra = i % QD_Quantiser::PERIOD == 0;
                    char out[QD_CODED_SIZE];
                    const std::string picture
                        = qd_test_picture(cuts ? std::max(0, i - 35) * 50 : i);
                    const int size = coder.encode(picture.data(), intra, i / double(FPS), out);
                    bytes += i < 30 ? 0 : size;
                    predicted.push_back(intra ? 0 : size);
                }
                EXPECT_TRUE(cuts || std::abs(bytes / 3.0 / 125 - 0.95 * kbps) < 0.15 * kbps);
                for (auto second = predicted.begin(); second + FPS <= predicted.end(); ++second)
                    EXPECT_LE(std::accumulate(second, second + FPS, 0), 2 * kbps * 125);
            }
}

TEST(Quantiser, CalmScenesGetLongerGapsAndNothingIsBeyondTheLimits)
{
    QD_Quantiser calm(20, 10);
    QD_Quantiser lively(20, 10);
    for (int i = 0; i < 200; ++i) {
        calm.coded({i * 0.2, i < 100 ? 300 : 100'000, i % 10 == 0, 10, 33, 0.1});
        lively.coded({i * 0.2, i < 100 ? 300 : 1, i % 10 == 0, 10, 33, 1000});
        EXPECT_TRUE(i != 99 || calm.get_target() > 1.5 * lively.get_target());
    }
    EXPECT_EQ(calm.get(false), QD_Quantiser::COARSEST);
    EXPECT_EQ(lively.get(false), QD_Quantiser::FINEST);
}
