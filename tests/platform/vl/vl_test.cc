#include "platform/vl/vl.h"

#include "platform/vl/test_card.h"
#include "tests/support/pictures.h"

#include <gtest/gtest.h>

namespace {

class Vl : public testing::Test {
protected:
    Vl() { setenv("QD_CAMERA", "testcard", 1); }
    ~Vl() override { qd_vl_shutdown(); }

    std::string decode_h261(int id, const std::string& bits)
    {
        std::string out(QD_PICTURE_SIZE, '\0');
        decode_frame(bits.data(), static_cast<int>(bits.size()), out.data(), 0, id);
        return out;
    }
    std::string decode_h263(int id, const std::string& bits)
    {
        const auto picture = H263decodeFrame(id, bits.data(), static_cast<int>(bits.size()));
        return picture ? std::string(picture.get(), QD_PICTURE_SIZE) : "";
    }
    static std::string h263(const std::string& picture, bool intra)
    {
        std::string out(QD_CODED_SIZE, '\0');
        const char* p = picture.data();
        out.resize(static_cast<size_t>(
            intra ? H263codeIntraFrame(p, out.data()) : H263codeFrame(&p, out.data())));
        return out;
    }
    static std::string h261(const std::string& picture, bool intra)
    {
        std::string out(QD_CODED_SIZE, '\0');
        out.resize(static_cast<size_t>(
            (intra ? p64EncodeIntraFrame : p64EncodeFrame)(picture.data(), out.data())));
        return out;
    }
};

}

TEST_F(Vl, StreamsAreDecodedApart)
{
    qd_set_video_rate(1500, 10);
    const std::string a0 = h263(qd_test_picture(0), true);
    const std::string a1 = h263(qd_test_picture(1), false);
    const std::string b0 = h261(qd_test_picture(50), true);
    const std::string b1 = h261(qd_test_picture(51), false);

    const std::string first = decode_h263(0, a0);
    EXPECT_GT(qd_psnr(first.data(), qd_test_picture(0).data()), 30);
    EXPECT_EQ(decode_h263(1, a1), "") << "stream 1 has seen no intra picture";
    EXPECT_EQ(decode_h263(99, a0), first);
    EXPECT_GT(qd_psnr(decode_h263(0, a1).data(), qd_test_picture(1).data()), 30);

    const std::string still = decode_h261(0, b0);
    EXPECT_GT(qd_psnr(still.data(), qd_test_picture(50).data()), 30);
    EXPECT_EQ(decode_h261(0, ""), still) << "the last good picture";
    EXPECT_GT(qd_psnr(decode_h261(0, b1).data(), qd_test_picture(51).data()), 30);
    EXPECT_EQ(static_cast<int>(decode_h261(7, "")[0]), 16) << "black";

    qd_reset_decoder(0);
    EXPECT_EQ(decode_h263(0, a1), "");
    EXPECT_EQ(static_cast<int>(decode_h261(0, "")[0]), 16);
    for (int id : {-1, 100, 1 << 30}) {
        EXPECT_EQ(decode_h263(id, a0), "");
        EXPECT_EQ(static_cast<int>(decode_h261(id, b0)[0]), 16);
        qd_reset_decoder(id);
    }
}

TEST(Yuv9, ColourIsEnlargedAndItsPlanesChangePlaces)
{
    const std::string src = "0123456789abcdefghijklmnopqrstuvVvUu"; // a plane, two points each
    std::string y(32, '\0');
    std::string u(8, '\0');
    std::string v(8, '\0');
    YVU9toYUV411(src.data(), y.data(), u.data(), v.data(), 8, 4);
    EXPECT_EQ(y, src.substr(0, 32));
    EXPECT_EQ(u, "UUuuUUuu");
    EXPECT_EQ(v, "VVvvVVvv");
}

TEST(TestCard, MovesAndTellsMembersApart)
{
    const auto card = [](int hue, long milliseconds) {
        std::string picture(QD_PICTURE_SIZE, '\0');
        QD_Test_Card(hue).paint(milliseconds, picture.data());
        return picture;
    };
    EXPECT_NE(card(0, 1000).substr(QD_U_OFFSET), card(120, 1000).substr(QD_U_OFFSET));
    for (long at = 0; at < 86'400'000; at += 1'234'567)
        EXPECT_LT(qd_psnr(card(120, at).data(), card(120, at + 1000).data()), 30) << at;
}
