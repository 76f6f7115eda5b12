#include "platform/vl/codec.h"

#include "tests/support/pictures.h"

#include <gtest/gtest.h>

namespace {

const char* format_of(QD_Codec codec) { return codec == QD_Codec::H263 ? "h263" : "h261"; }

class Codec : public testing::TestWithParam<QD_Codec> {
protected:
    // Codes `count` pictures of the moving scene, intra at every tenth.
    std::vector<std::string> code(int count, double quantiser = 6)
    {
        QD_Picture_Encoder encoder(GetParam());
        EXPECT_EQ(encoder.open(10, QD_CODED_SIZE), 0);
        std::vector<std::string> coded;
        for (int i = 0; i < count; ++i) {
            char out[QD_CODED_SIZE];
            const int n = encoder.encode(qd_test_picture(i).data(), i % 10 == 0, quantiser, out);
            EXPECT_GT(n, 0);
            coded.emplace_back(out, static_cast<size_t>(std::max(n, 0)));
        }
        return coded;
    }

    static int decode(QD_Picture_Decoder& decoder, const std::string& bits, std::string& out)
    {
        out.resize(QD_PICTURE_SIZE);
        return decoder.decode(bits.data(), static_cast<int>(bits.size()), out.data());
    }

    // Quantiser 31, all details: what no link setting would send.
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

TEST_P(Codec, ADecoderOfOthersSeesWhatOursSees)
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
    }
    EXPECT_TRUE(qd_ffmpeg_decode(format_of(GetParam()), stream) == ours);
}

// Fields as the recommendations number them.
TEST_P(Codec, HeadersAreThoseOfQcifAndBaseline)
{
    const auto coded = code(21);
    for (size_t i = 0; i < coded.size(); ++i) {
        const std::string& bits = coded[i];
        if (GetParam() == QD_Codec::H261) {
            EXPECT_EQ(header_bits(bits, 0, 20), 0x10u) << "picture start code";
            EXPECT_EQ(header_bits(bits, 28, 1), 0u) << "QCIF";
            continue;
        }
        EXPECT_EQ(header_bits(bits, 0, 22), 0x20u) << "picture start code";
        EXPECT_EQ(header_bits(bits, 30, 5), 0x10u) << "always 1, then 0, no split screen and such";
        EXPECT_EQ(header_bits(bits, 35, 3), 2u) << "QCIF";
        EXPECT_EQ(header_bits(bits, 38, 1), i % 10 == 0 ? 0u : 1u) << "intra as asked for";
        EXPECT_EQ(header_bits(bits, 39, 4), 0u) << "no optional mode";
    }
}

TEST_P(Codec, NoPictureIsLongerThanAllowedNotEvenNoise)
{
    for (int cap : {1400, QD_CODED_SIZE}) {
        QD_Picture_Encoder encoder(GetParam());
        ASSERT_EQ(encoder.open(10, cap), 0);
        QD_Picture_Decoder decoder(GetParam());
        std::string stream;
        std::string ours;
        for (int i = 0; i < 30; ++i) {
            // noise, then a scene, so that what follows a softened picture is seen to fit on it
            const bool noise = i < 12 || i % 7 == 0;
            const std::string picture
                = noise ? qd_noise_picture(static_cast<unsigned>(i)) : qd_test_picture(i);
            char out[QD_CODED_SIZE + 16];
            std::fill(std::end(out) - 16, std::end(out), 'x');
            const int n = encoder.encode(picture.data(), i % 10 == 0, 2, out);
            ASSERT_GT(n, 0);
            ASSERT_LE(n, QD_CODED_SIZE);
            ASSERT_EQ(std::string(std::end(out) - 16, 16), std::string(16, 'x'));
            stream.append(out, static_cast<size_t>(n));
            std::string decoded;
            ASSERT_EQ(decode(decoder, std::string(out, static_cast<size_t>(n)), decoded), 0);
            ours += decoded;
            if (!noise) {
                EXPECT_GT(qd_psnr(decoded.data(), picture.data()), 22) << i;
            }
        }
        EXPECT_TRUE(qd_ffmpeg_decode(format_of(GetParam()), stream) == ours);
    }
}

TEST_P(Codec, ACapMakesPicturesCoarserNotWorseThanThat)
{
    QD_Picture_Encoder encoder(GetParam());
    ASSERT_EQ(encoder.open(10, 1400), 0);
    QD_Picture_Decoder decoder(GetParam());
    for (int i = 0; i < 20; ++i) {
        char out[QD_CODED_SIZE];
        const std::string picture = qd_test_picture(i);
        const int n = encoder.encode(picture.data(), i % 10 == 0, 2, out);
        ASSERT_GT(n, 0);
        EXPECT_LE(n, 1400);
        std::string decoded;
        ASSERT_EQ(decode(decoder, std::string(out, static_cast<size_t>(n)), decoded), 0);
        EXPECT_GT(qd_psnr(decoded.data(), picture.data()), 24) << i;
    }
}

TEST_P(Codec, PicturesKeepToTheRoomThatIsLeft)
{
    QD_Picture_Encoder encoder(GetParam());
    ASSERT_EQ(encoder.open(10, 5000), 0);
    const int shared = 3000;
    int room = 5000;
    for (int i = 0; i < 40; ++i) {
        char out[QD_CODED_SIZE];
        const bool is_shared = i % 4 != 3; // every fourth picture starts from 5000 again
        encoder.set_next_room(is_shared ? shared : 5000, is_shared);
        const int n = encoder.encode(qd_test_picture(i * 9).data(), i % 20 == 0, 1, out);
        ASSERT_GT(n, 0);
        EXPECT_TRUE(n <= room || encoder.get_quantiser() > 30) << i << ": " << n << " of " << room;
        if (i % 4 == 0) {
            EXPECT_GT(n, 1250) << "nor are they coarser than need be: " << i;
        }
        EXPECT_GT(encoder.get_error(), 0);
        room = is_shared && n <= room ? shared - n : 5000; // too long a one is only guessed at
    }
}

TEST_P(Codec, AnEncoderThatIsNotOpenCodesNothing)
{
    QD_Picture_Encoder encoder(GetParam());
    char out[QD_CODED_SIZE];
    EXPECT_EQ(encoder.encode(qd_test_picture(0).data(), true, 5, out), -1);
    ASSERT_EQ(encoder.open(5, 4000), 0);
    EXPECT_GT(encoder.encode(qd_test_picture(0).data(), false, 5, out), 0) << "intra all the same";
    QD_Picture_Decoder decoder(GetParam());
    std::string decoded(QD_PICTURE_SIZE, '\0');
    ASSERT_EQ(decoder.decode(out, 4000, decoded.data()), 0);
    EXPECT_GT(qd_psnr(decoded.data(), qd_test_picture(0).data()), 30);
    encoder.close();
    EXPECT_EQ(encoder.encode(qd_test_picture(0).data(), true, 5, out), -1);
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
    QD_Picture_Encoder stranger(other);
    ASSERT_EQ(stranger.open(10, QD_CODED_SIZE), 0);
    std::string strange(QD_CODED_SIZE, '\0');
    strange.resize(
        static_cast<size_t>(stranger.encode(qd_test_picture(0).data(), true, 8, strange.data())));

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

TEST_P(Codec, LossIsMendedByTheNextIntraPicture)
{
    const auto coded = code(31);
    QD_Picture_Decoder clean(GetParam());
    QD_Picture_Decoder lossy(GetParam());
    std::string expected;
    std::string got;
    for (size_t i = 0; i < coded.size(); ++i) {
        decode(clean, coded[i], expected);
        if (i % 10 == 3 || i == 20)
            continue; // lost; the third intra picture, too
        const int result = decode(lossy, coded[i], got);
        if (i < 3 || i / 10 == 1 ? i % 10 < 3 : i == 30) {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(got, expected) << i;
        }
    }
}

TEST_P(Codec, BeforeTheFirstIntraPictureThereIsOnlyBlack)
{
    const auto coded = code(11);
    QD_Picture_Decoder decoder(GetParam());
    std::string picture(QD_PICTURE_SIZE, '\0');
    decoder.get_last(picture.data());
    EXPECT_EQ(picture.substr(0, QD_LUMA_SIZE), std::string(QD_LUMA_SIZE, 16));
    EXPECT_EQ(picture.substr(QD_LUMA_SIZE), std::string(2 * QD_CHROMA_SIZE, '\x80'));
    if (GetParam() == QD_Codec::H263) {
        EXPECT_EQ(decode(decoder, coded[5], picture), -1);
    }
    ASSERT_EQ(decode(decoder, coded[10], picture), 0);
    std::string last(QD_PICTURE_SIZE, '\0');
    decoder.get_last(last.data());
    EXPECT_EQ(last, picture);
}

// Bytes flipped, cut, put in and left out; more of them with QD_MUTATIONS set.
TEST_P(Codec, MutatedPicturesDoNoHarmAndTheNextIntraIsExact)
{
    const auto coded = code(20, 9);
    QD_Picture_Decoder clean(GetParam());
    std::string expected;
    ASSERT_EQ(decode(clean, coded[0], expected), 0);

    const char* asked = getenv("QD_MUTATIONS");
    const int rounds = asked != nullptr ? atoi(asked) : 20000;
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
