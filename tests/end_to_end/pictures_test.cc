// Pictures at a real client: what its window shows is what the member's camera saw.
#include "platform/vl/codec.h"
#include "tests/support/udp_peer.h"
#include "tests/support/video_window.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

constexpr int ANNA = 2;
constexpr int BERNT = 3;

// The test itself as Anna, with pictures of its own making, and a client as Bernt.
class PicturesTest : public testing::Test {
protected:
    PicturesTest()
    {
        for (QD_Picture_Encoder& encoder : encoders_)
            encoder.open(25, QD_CODED_SIZE);
        EXPECT_TRUE(bernt_.meets({BERNT, ANNA}));
    }
    void TearDown() override { EXPECT_EQ(bernt_.end(), 0); }

    // Picture number `number` of the card of hue 240, every tenth intra; type 0 is H.263, 1 H.261.
    void send_picture(int type, int number)
    {
        std::string card(QD_PICTURE_SIZE, '\0');
        QD_Test_Card(240).paint(number * 40, card.data());
        std::string coded(QD_CODED_SIZE, '\0');
        const int size = encoders_[type].encode(card.data(), number % 10 == 0, 4, coded.data());
        ASSERT_GT(size, 0);
        send(type, std::string(12, 'h') + coded.substr(0, static_cast<size_t>(size)) + "end");
    }

    // Nothing, if the network is to lose it.
    void send(int type, const std::string& payload)
    {
        std::string header("\x80\0\0\0\0\0\0\0\0\0\0\2", 12);
        header[1] = static_cast<char>(type);
        header[3] = static_cast<char>(++seq_);
        if (seq_ * 37 % 100 >= loss_) {
            EXPECT_TRUE(peer_.send(header + payload, qd_test_host(BERNT)));
        }
    }

    bool shows_anna() const { return qd_shows(bernt_, "m2@", 240); }

    const QD_X_Server x_server_ {"1430x800x24"};
    QD_Client_Under_Test bernt_ {BERNT, {.toolkit_options = qd_seeing_options(1)}};
    int loss_ = 0; // percent

private:
    const QD_Udp_Peer peer_ {qd_test_host(ANNA), 34999};
    QD_Picture_Encoder encoders_[2] {
        QD_Picture_Encoder(QD_Codec::H263), QD_Picture_Encoder(QD_Codec::H261)};
    int seq_ = 0;
};

}

TEST_F(PicturesTest, LostPacketsFreezeNothingAndPicturesRecover)
{
    int number = 0;
    for (int percent : {0, 5, 20}) {
        loss_ = percent;
        std::string last;
        for (int changes = 0; changes < 8; ++changes)
            EXPECT_TRUE(qd_wait_for([&] {
                for (int i = 0; i < 10; ++i)
                    send_picture(0, number++);
                const std::string now = qd_shoot(bernt_, "m2@");
                return now != last && (last = now, true);
            })) << "the clock in the picture runs";
        loss_ = 0;
        for (int i = 0; i < 10; ++i)
            send_picture(0, number++);
        EXPECT_TRUE(shows_anna());
    }
}

TEST_F(PicturesTest, TwentyFiveAreReceivedAndTwentyFiveDrawnEachSecond)
{
    constexpr int SENT = 100; // of each codec
    for (int type : {0, 1}) {
        auto next = std::chrono::steady_clock::now();
        for (int number = 0; number < SENT; ++number) {
            send_picture(type, number);
            next += std::chrono::milliseconds(40);
            std::this_thread::sleep_until(next); // the pace is what is tested
        }
        EXPECT_TRUE(shows_anna()) << type;
    }
    EXPECT_EQ(bernt_.end(), 0);
    // The first picture opens the window and the second prepares it. Its own are another line.
    EXPECT_GE(
        atoi(qd_output("sed -n 's/.*m2.*shown //p' " + bernt_.file("log")).c_str()), 2 * SENT - 6);
}

TEST_F(PicturesTest, WindowsOpenAndCloseAHundredTimesBySendersRequestsAndByLeaving)
{
    QD_Person person(bernt_);
    ASSERT_TRUE(person.look_at("Quendal"));
    size_t early = 0;
    for (int round = 0; round < 100; ++round) {
        ASSERT_TRUE(bernt_.meets({ANNA}));
        send(3, "");
        for (int number = 0; number < 4; ++number)
            send_picture(round % 2, number);
        if (round % 3 != 0)
            send(5, "");
        if (round % 10 == 0)
            person.click(55, 206); // Camera: the own window goes and comes
        // Perhaps in the middle of a picture's decoding.
        bernt_.framework().remove(ANNA, ANNA);
        ASSERT_TRUE(bernt_.framework().settle());
        if (round == 30)
            early = qd_resident_kilobytes(bernt_.pid());
    }
    const size_t held_back = *QD_SANITIZED != '\0' ? 1 << 20 : 0; // by a sanitizer
    EXPECT_LT(qd_resident_kilobytes(bernt_.pid()), early + 2048 + held_back);
    EXPECT_TRUE(person.loses("m2@")) << "no window is left of who left";
}
