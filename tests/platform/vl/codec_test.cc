#include "platform/vl/codec.h"

#include "tests/support/pictures.h"

#include <gtest/gtest.h>

namespace {

const char* format_of(QD_Codec codec) { return codec == QD_Codec::H263 ? "h263" : "h261"; }

class Codec : public testing::TestWithParam<QD_Codec> {
protected:
    // Checks that the encoder writes no byte beyond the longest picture.
    static std::string code(
        QD_Picture_Encoder& encoder, const std::string& picture, bool intra, double quantiser)
    {
        std::string out(QD_CODED_SIZE + 16, 'x');
        const int n = encoder.encode(picture.data(), intra, quantiser, out.data());
        EXPECT_TRUE(n > 0 && n <= QD_CODED_SIZE) << n;
        EXPECT_EQ(out.substr(QD_CODED_SIZE), std::string(16, 'x'));
        return out.substr(0, static_cast<size_t>(std::max(n, 0)));
    }

    // Codes `count` pictures of the moving scene, intra at every tenth.
    static std::vector<std::string> code(
        int count, double quantiser = 6, QD_Codec codec = GetParam())
    {
        QD_Picture_Encoder encoder(codec);
        EXPECT_EQ(encoder.open(10, QD_CODED_SIZE), 0);
        std::vector<std::string> coded;
        for (int i = 0; i < count; ++i)
            coded.push_back(code(encoder, qd_test_picture(i), i % 10 == 0, quantiser));
        return coded;
    }

    static int decode(QD_Picture_Decoder& decoder, const std::string& bits, std::string& out)
    {
        out.resize(QD_PICTURE_SIZE);
        return decoder.decode(bits.data(), static_cast<int>(bits.size()), out.data());
    }

    // `count` bits from bit `at` on.
    static unsigned header_bits(const std::string& bits, int at, int count)
    {
        unsigned value = 0;
        for (int i = at; i < at + count; ++i)
            value = value << 1
                | (static_cast<uint8_t>(bits[static_cast<size_t>(i / 8)]) >> (7 - i % 8) & 1);
        return value;
    }
};

}

INSTANTIATE_TEST_SUITE_P(Both, Codec, testing::Values(QD_Codec::H263, QD_Codec::H261),
    [](const auto& tested) { return std::string(format_of(tested.param)); });

TEST_P(Codec, ADecoderOfOthersSeesWhatOursSeesAndHeadersAreThoseOfQcifAndBaseline)
{
    const auto coded = code(25);
    QD_Picture_Decoder decoder(GetParam());
    std::string stream;
    std::string ours;
    for (size_t i = 0; i < coded.size(); ++i) {
        std::string picture;
        ASSERT_EQ(decode(decoder, coded[i], picture), 0);
        EXPECT_GT(qd_psnr(picture.data(), qd_test_picture(static_cast<int>(i)).data()), 32);
        stream += coded[i];
        ours += picture;
        // Fields as the recommendations number them.
        if (GetParam() == QD_Codec::H261) {
            EXPECT_EQ(header_bits(coded[i], 0, 20), 0x10u) << "picture start code";
            EXPECT_EQ(header_bits(coded[i], 28, 1), 0u) << "QCIF";
        } else {
            EXPECT_EQ(header_bits(coded[i], 0, 22), 0x20u) << "picture start code";
            EXPECT_EQ(header_bits(coded[i], 30, 5), 0x10u) << "1, then 0, no split screen and such";
            EXPECT_EQ(header_bits(coded[i], 35, 3), 2u) << "QCIF";
            EXPECT_EQ(header_bits(coded[i], 38, 1), i % 10 != 0 ? 1u : 0u) << "intra as asked for";
            EXPECT_EQ(header_bits(coded[i], 39, 4), 0u) << "no optional mode";
        }
    }
    EXPECT_TRUE(qd_ffmpeg_decode(format_of(GetParam()), stream) == ours);
}

TEST_P(Codec, NoPictureIsLongerThanAllowedNotEvenNoise)
{
    for (int cap : {1400, QD_CODED_SIZE}) {
        QD_Picture_Encoder encoder(GetParam());
        ASSERT_EQ(encoder.open(10, cap), 0);
        QD_Picture_Decoder decoder(GetParam());
        std::string stream;
        std::string ours;
        for (int i = 0; i < 50; ++i) {
            // noise, then a scene, so that what follows a softened picture is seen to fit on it
            const bool noise = i < 12 || (i < 30 && i % 7 == 0);
            const std::string picture
                = noise ? qd_noise_picture(static_cast<unsigned>(i)) : qd_test_picture(i);
            const std::string coded = code(encoder, picture, i % 10 == 0, 2);
            EXPECT_LE(coded.size(), static_cast<size_t>(i < 30 ? QD_CODED_SIZE : cap));
            std::string decoded;
            ASSERT_EQ(decode(decoder, coded, decoded), 0);
            stream += coded;
            ours += decoded;
            if (!noise) {
                EXPECT_GT(qd_psnr(decoded.data(), picture.data()), i < 30 ? 22 : 24) << i;
            }
        }
        EXPECT_TRUE(qd_ffmpeg_decode(format_of(GetParam()), stream) == ours);
    }
}

TEST_P(Codec, WhatIsNoPictureOfOursIsRefusedAndSpoilsNothing)
{
    const auto coded = code(12);
    std::string forged_size = coded[0];
    if (GetParam() == QD_Codec::H263)
        forged_size[4] = static_cast<char>((forged_size[4] & ~0x1c) | 3 << 2); // CIF
    else
        forged_size[3] = static_cast<char>(forged_size[3] | 0x08); // CIF
    const auto other = GetParam() == QD_Codec::H263 ? QD_Codec::H261 : QD_Codec::H263;
    const std::string strange = code(1, 8, other)[0];

    QD_Picture_Decoder clean(GetParam());
    QD_Picture_Decoder tried(GetParam());
    std::string expected;
    std::string got;
    const std::string refused[] = {"", coded[0].substr(0, 1), coded[0].substr(0, 6), forged_size,
        strange, std::string(5000, '\0'), std::string(8192, '\xff')};
    for (const std::string& picture : coded) {
        ASSERT_EQ(decode(clean, picture, expected), 0);
        for (const std::string& bad : refused) {
            std::string untouched(QD_PICTURE_SIZE, 'u');
            EXPECT_EQ(decode(tried, bad, untouched), -1);
            EXPECT_EQ(untouched, std::string(QD_PICTURE_SIZE, 'u'));
        }
        ASSERT_EQ(decode(tried, picture, got), 0);
        ASSERT_EQ(got, expected);
    }
    EXPECT_EQ(tried.decode(coded[0].data(), -3, got.data()), -1);
}

// Bytes flipped, cut, put in and left out; more of them with QD_MUTATIONS set.
TEST_P(Codec, MutatedPicturesDoNoHarmAndTheNextIntraIsExact)
{
    const auto coded = code(20, 9);
    QD_Picture_Decoder clean(GetParam());
    std::string expected;
    ASSERT_EQ(decode(clean, coded[0], expected), 0);

    const char* asked = getenv("QD_MUTATIONS");
    const int rounds = asked != nullptr ? atoi(asked) : 5000;
    std::mt19937 random(4711);
    const auto any = [&](size_t below) { return random() % std::max<size_t>(below, 1); };
    QD_Picture_Decoder decoder(GetParam());
    std::string got;
    for (int round = 0; round < rounds; ++round) {
        std::string bits = coded[any(coded.size())];
        const size_t from = any(2) != 0 ? 5 : 0; // half of them keep their header
        for (size_t n = 1 + any(6); n > 0 && bits.size() > 8; --n) {
            const size_t at = from + any(bits.size() - from);
            switch (any(5)) {
            case 0:
                bits.resize(at);
                break;
            case 1:
                bits.erase(at, 1 + any(40));
                break;
            case 2:
                bits.insert(at, bits.substr(any(bits.size()), any(40)));
                break;
            default:
                bits[at] = static_cast<char>(random());
            }
        }
        decode(decoder, bits, got);
        if (round % 50 == 49) {
            ASSERT_EQ(decode(decoder, coded[0], got), 0) << round;
            ASSERT_EQ(got, expected) << round;
        }
    }
}
