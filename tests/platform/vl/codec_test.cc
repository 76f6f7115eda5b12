#include "platform/vl/codec.h"

#include "tests/support/pictures.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

struct Codec : testing::TestWithParam<QD_Codec> {
    std::string code(const std::string& picture, bool intra)
    {
        std::string out(QD_CODED_SIZE, 'x');
        const int n = encoder.encode(picture.data(), intra, 3, out.data());
        EXPECT_TRUE(n > 0 && n <= QD_CODED_SIZE) << n;
        return out.substr(0, static_cast<size_t>(std::max(n, 0)));
    }

    // The picture, "" if it is refused and nothing is written.
    static std::string decode(QD_Picture_Decoder& decoder, const std::string& bits)
    {
        std::string out(QD_PICTURE_SIZE, 'u');
        if (decoder.decode(bits.data(), static_cast<int>(bits.size()), out.data()) == 0)
            return out;
        EXPECT_EQ(out, std::string(QD_PICTURE_SIZE, 'u'));
        return "";
    }

    const bool h263 = GetParam() == QD_Codec::H263;
    std::mt19937 random {4711};
    QD_Picture_Encoder encoder {GetParam()};
    QD_Picture_Decoder decoder {GetParam()};
};

}

INSTANTIATE_TEST_SUITE_P(Both, Codec, testing::Values(QD_Codec::H263, QD_Codec::H261));

TEST_P(Codec, ADecoderOfOthersSeesWhatOursSeesAndNotEvenNoiseIsLongerThanAllowed)
{
    for (int cap : {1400, QD_CODED_SIZE}) {
        ASSERT_EQ(encoder.open(10, cap), 0);
        std::string stream;
        std::string ours;
        for (int i = 0; i < 50; ++i) {
            // noise, then a scene, so that what follows a softened picture is seen to fit on it
            const bool noise = i < 12 || (i < 30 && i % 7 == 0);
            std::string picture = qd_test_picture(i);
            if (noise)
                std::ranges::generate(picture, random);
            const std::string coded = code(picture, i % 10 == 0);
            EXPECT_LE(coded.size(), static_cast<size_t>(i < 30 ? QD_CODED_SIZE : cap));
            EXPECT_TRUE(!h263 || ((coded[4] & ~2) == 8 && (coded[5] & 0xe0) == 0)) << "baseline";
            stream += coded;
            ours += decode(decoder, coded);
            const char* decoded = &ours[static_cast<size_t>(i) * QD_PICTURE_SIZE];
            EXPECT_GT(qd_psnr(decoded, picture.data()), noise ? 0 : i < 30 ? 22 : 24) << i;
        }
        EXPECT_TRUE(qd_ffmpeg_decode(h263 ? "h263" : "h261", stream) == ours);
    }
}

TEST_P(Codec, WhatIsNoPictureOfOursIsRefusedAndSpoilsNothing)
{
    ASSERT_EQ(encoder.open(10, QD_CODED_SIZE), 0);
    const std::string first = code(qd_test_picture(0), true);
    const std::string next = code(qd_test_picture(1), false);
    std::string forged_size = first;
    forged_size[h263 ? 4 : 3] ^= h263 ? 4 : 8; // CIF
    QD_Picture_Decoder clean(GetParam());
    EXPECT_TRUE(!h263 || decode(decoder, next).empty()) << "nothing to predict from";
    for (const std::string& picture : {first, next}) {
        for (const std::string& bad : {std::string(), first.substr(0, 6), forged_size,
                 std::string(5000, '\0'), std::string(8192, '\xff')})
            EXPECT_EQ(decode(decoder, bad), "");
        ASSERT_EQ(decode(decoder, picture), decode(clean, picture));
    }

    // What looks like one does no harm, and the next intra picture is exact.
    const std::string expected = decode(clean, first);
    for (int round = 0; round < 1000; ++round) {
        std::string bits = round % 2 == 0 ? first : next;
        for (int n = 0; n < 5; ++n)
            bits[5 + random() % (bits.size() - 5)] = static_cast<char>(random());
        decode(decoder, bits);
        ASSERT_TRUE(round % 50 != 0 || decode(decoder, first) == expected) << round;
    }
}
