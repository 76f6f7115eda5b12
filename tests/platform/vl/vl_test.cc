#include "platform/vl/vl.h"

#include "tests/support/pictures.h"

#include <gtest/gtest.h>

TEST(Vl, StreamsAreDecodedApartAndForgottenWhenReset)
{
    qd_set_video_rate(1500, 10);
    std::string bits(QD_CODED_SIZE, '\0');
    const int size = p64EncodeIntraFrame(qd_test_picture(0).data(), bits.data());
    const auto decode = [&](int id, int length) {
        std::string out(QD_PICTURE_SIZE, '\0');
        decode_frame(bits.data(), length, out.data(), 0, id);
        return out;
    };
    const std::string picture = decode(0, size);
    EXPECT_EQ(decode(0, 3), picture) << "the last good one";
    EXPECT_EQ(decode(1, 3)[0], 16) << "black before the first";
    qd_reset_decoder(0);
    EXPECT_EQ(decode(0, 3)[0], 16);
    for (int none : {-1, 100}) {
        EXPECT_EQ(decode(none, size)[0], 16);
        qd_reset_decoder(none);
    }
}

TEST(Yuv9, ColourIsEnlargedAndItsPlanesChangePlaces)
{
    const std::string src = "0123456789abcdefghijklmnopqrstuvVvUu"; // a plane, two points each
    std::string out(48, '\0');
    YVU9toYUV411(src.data(), out.data(), &out[32], &out[40], 8, 4);
    EXPECT_EQ(out, src.substr(0, 32) + "UUuuUUuuVVvvVVvv");
}
