// Pictures between real clients: what a window shows is what its member's camera saw.
#include "platform/vl/codec.h"
#include "tests/support/relay.h"
#include "tests/support/video_window.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

constexpr int VIDEO_PORT = 34999;
constexpr int ANNA = 2;
constexpr int BERNT = 3;
constexpr int RELAY = 20; // where Anna believes Bernt to be
const char* const CARDS[] = {"testcard:0", "testcard:120"};

class PicturesTest : public testing::Test {
protected:
    // A client with its camera on, its video windows in a row of their own.
    static QD_Client_Under_Test::Set_Up seeing(int index)
    {
        return {.camera = CARDS[index], .toolkit_options = qd_seeing_options(index)};
    }

    const QD_X_Server x_server_ {"1430x800x24"};
};

}

TEST_F(PicturesTest, LostPacketsFreezeNothingAndPicturesRecover)
{
    QD_Relay relay(qd_test_host(RELAY), qd_test_host(BERNT), VIDEO_PORT, 1);
    ASSERT_TRUE(relay.bound());
    QD_Client_Under_Test anna(ANNA, seeing(0));
    QD_Client_Under_Test bernt(BERNT, seeing(1));
    anna.framework().announce(ANNA, ANNA, "m2");
    anna.framework().announce(BERNT, RELAY, "m3");
    bernt.framework().announce(BERNT, BERNT, "m3");
    bernt.framework().announce(ANNA, ANNA, "m2");
    EXPECT_TRUE(qd_shows(bernt, "m2@", 0));
    for (int percent : {5, 20}) {
        relay.drop(percent);
        const int dropped = relay.dropped();
        std::string last;
        for (int changes = 0; changes < 8; ++changes)
            EXPECT_TRUE(qd_wait_for([&] {
                const std::string now = qd_shoot(bernt, "m2@");
                return now != last && (last = now, true);
            })) << "the clock in the picture runs";
        EXPECT_TRUE(
            qd_wait_for([&] { return relay.dropped() > dropped; }, std::chrono::seconds(30)));
        relay.drop(0);
        EXPECT_TRUE(qd_shows(bernt, "m2@", 0));
    }
    EXPECT_EQ(anna.end(), 0);
    EXPECT_EQ(bernt.end(), 0);
}

// The test itself as Anna, with pictures of its own making.
class Sender {
public:
    Sender() : peer_(qd_test_host(ANNA), VIDEO_PORT)
    {
        for (QD_Picture_Encoder& encoder : encoders_)
            encoder.open(25, QD_CODED_SIZE);
    }

    bool bound() const { return peer_.bound(); }

    // Picture number `number` of the card of hue 240, every tenth intra; type 0 is H.263, 1 H.261.
    bool send_picture(int type, int number)
    {
        std::string card(QD_PICTURE_SIZE, '\0');
        QD_Test_Card(240).paint(number * 40, card.data());
        std::string coded(QD_CODED_SIZE, '\0');
        const int size = encoders_[type].encode(card.data(), number % 10 == 0, 4, coded.data());
        return size > 0
            && send(
                type, std::string(12, 'h') + coded.substr(0, static_cast<size_t>(size)) + "end");
    }

    bool send(int type, const std::string& payload)
    {
        std::string header("\x80\0\0\0\0\0\0\0\0\0\0\0", 12);
        header[1] = static_cast<char>(type);
        header[3] = static_cast<char>(seq_++);
        header[11] = ANNA;
        return peer_.send(header + payload, qd_test_host(BERNT));
    }

private:
    const QD_Udp_Peer peer_;
    QD_Picture_Encoder encoders_[2] {
        QD_Picture_Encoder(QD_Codec::H263), QD_Picture_Encoder(QD_Codec::H261)};
    int seq_ = 0;
};

TEST_F(PicturesTest, TwentyFiveAreReceivedAndTwentyFiveDrawnEachSecond)
{
    constexpr int SENT = 100; // of each codec
    Sender anna;
    ASSERT_TRUE(anna.bound());
    QD_Client_Under_Test bernt(BERNT, {});
    bernt.framework().announce(BERNT, BERNT, "m3");
    bernt.framework().announce(ANNA, ANNA, "m2");
    ASSERT_TRUE(bernt.framework().settle());
    for (int type : {0, 1}) {
        auto next = std::chrono::steady_clock::now();
        for (int number = 0; number < SENT; ++number) {
            ASSERT_TRUE(anna.send_picture(type, number));
            next += std::chrono::milliseconds(40);
            std::this_thread::sleep_until(next); // the pace is what is tested
        }
        EXPECT_TRUE(qd_shows(bernt, "m2@", 240)) << type;
    }
    EXPECT_EQ(bernt.end(), 0);
    // The first picture opens the window and the second prepares it.
    EXPECT_GE(atoi(qd_output("sed -n 's/.*shown //p' " + bernt.file("log")).c_str()), 2 * SENT - 6);
}

TEST_F(PicturesTest, WindowsOpenAndCloseAHundredTimesBySendersRequestsAndByLeaving)
{
    Sender anna;
    ASSERT_TRUE(anna.bound());
    QD_Client_Under_Test bernt(BERNT, seeing(1));
    bernt.framework().announce(BERNT, BERNT, "m3");
    QD_Person person(bernt);
    ASSERT_TRUE(person.look_at("Quendal"));
    size_t early = 0;
    for (int round = 0; round < 100; ++round) {
        bernt.framework().announce(ANNA, ANNA, "m2");
        ASSERT_TRUE(bernt.framework().settle());
        anna.send(3, "");
        for (int number = 0; number < 4; ++number)
            anna.send_picture(round % 2, number);
        if (round % 3 != 0)
            anna.send(5, "");
        if (round % 10 == 0)
            person.click(55, 206); // Camera: the own window goes and comes
        // Perhaps in the middle of a picture's decoding.
        bernt.framework().remove(ANNA, ANNA);
        ASSERT_TRUE(bernt.framework().settle());
        if (round == 30)
            early = qd_resident_kilobytes(bernt.pid());
    }
    if (std::string(QD_SANITIZED).empty()) { // sanitizers hold freed memory back
        EXPECT_LT(qd_resident_kilobytes(bernt.pid()), early + 2048);
    }
    EXPECT_TRUE(qd_wait_for([] { return qd_output("xdotool search --name '^m2@'").empty(); }))
        << "no window is left of who left";
    EXPECT_EQ(bernt.end(), 0);
}
