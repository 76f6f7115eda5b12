#include "platform/vl/link_coder.h"

#include "tests/support/pictures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr int FPS = 10;

// The sizes of what comes of 60 pictures, intra at every tenth.
template <class Picture> std::vector<int> sizes_of(QD_Codec codec, double kbps, Picture picture)
{
    QD_Link_Coder coder(codec);
    EXPECT_EQ(coder.open(kbps, FPS), 0);
    std::vector<int> sizes;
    for (int i = 0; i < 60; ++i) {
        char out[QD_CODED_SIZE];
        sizes.push_back(
            coder.encode(picture(i).data(), i % QD_Quantiser::PERIOD == 0, i / double(FPS), out));
        EXPECT_GT(sizes.back(), 0);
    }
    return sizes;
}

}

TEST(LinkCoder, TheLinkDecidesWhatPicturesCost)
{
    for (double kbps : {60., 120.}) {
        const auto sizes = sizes_of(QD_Codec::H261, kbps, qd_test_picture);
        double bytes = 0;
        for (size_t i = 30; i < sizes.size(); ++i)
            bytes += sizes[i];
        EXPECT_NEAR(bytes / 30 * FPS / 125, 0.95 * kbps, 0.15 * kbps);
    }
}

TEST(LinkCoder, NoSecondTakesTwiceTheLinksShareBesideAnIntraPicture)
{
    const auto cut = [](int i) { return qd_test_picture(i / 7 * 50 + i); };
    for (QD_Codec codec : {QD_Codec::H263, QD_Codec::H261}) {
        for (double kbps : {40., 120.}) {
            const auto sizes = sizes_of(codec, kbps, cut);
            for (size_t from = 0; from + FPS <= sizes.size(); ++from) {
                int second = 0;
                for (size_t i = from; i < from + FPS; ++i)
                    second += i % QD_Quantiser::PERIOD == 0 ? 0 : sizes[i];
                EXPECT_LE(second, 2 * kbps * 125) << from;
            }
        }
    }
}
