// Sound between real clients: what one hears is what the other's microphone took.
#include "platform/net/bytes.h"
#include "tests/support/client_under_test.h"
#include "tests/support/signal_math.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

constexpr int AUDIO_PORT = 12567;
constexpr int SENDER = 2;
constexpr int RECEIVER = 3;
constexpr int CAPTURE = 9; // the test itself, a member who writes down what it gets

class Sound : public testing::Test {
protected:
    Sound() { qd_write_wav(dir_ / "voice.wav", voice_); }

    // Everybody knows the sender, the receiver and the capture.
    static void announce_all(QD_Client_Under_Test& client)
    {
        ASSERT_TRUE(client.registered());
        client.framework().announce(SENDER, SENDER, "sender");
        client.framework().announce(RECEIVER, RECEIVER, "receiver");
        client.framework().announce(CAPTURE, CAPTURE, "capture");
        ASSERT_TRUE(client.framework().settle());
    }

    bool silent() const
    {
        // What was on its way, however much, then nothing for three frames.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (std::chrono::steady_clock::now() < end)
            if (capture_.receive(350).empty())
                return true;
        return false;
    }

    const QD_X_Server x_server_;
    const std::vector<short> voice_ = qd_noise(7);
    const QD_Temp_Dir dir_;
    const QD_Udp_Peer capture_ {qd_test_host(CAPTURE), AUDIO_PORT};
};

}

TEST_F(Sound, PcmIsBitExactAtTenPacketsASecondUntilTalkIsSwitchedOffByHand)
{
    ASSERT_TRUE(capture_.bound());
    QD_Client_Under_Test receiver(RECEIVER, {.speaker = "file:" + dir_.path()});
    QD_Client_Under_Test sender(SENDER, {.mic = "file:" + dir_ / "voice.wav"});
    announce_all(receiver);
    announce_all(sender);

    std::vector<short> sent;
    unsigned seq = 0;
    uint32_t time = 0;
    auto begin = std::chrono::steady_clock::now();
    for (int count = 0; count <= 100; ++count) {
        std::string packet;
        do // the receiver is silent, and says so
            packet = capture_.receive();
        while (packet.size() > 11 && packet[11] != SENDER);
        ASSERT_EQ(packet.size(), 1612u);
        EXPECT_EQ(packet.substr(0, 2), "\x80\x0f");
        const auto* header = reinterpret_cast<const uint8_t*>(packet.data());
        if (count == 0) {
            begin = std::chrono::steady_clock::now();
        } else {
            EXPECT_EQ(qd_get_u16(header + 2), (seq + 1) % 65536);
            EXPECT_LT(qd_get_u32(header + 4) - time, 1000u) << "milliseconds, going up";
        }
        seq = qd_get_u16(header + 2);
        time = qd_get_u32(header + 4);
        EXPECT_EQ(qd_get_u32(header + 8), static_cast<uint32_t>(SENDER));
        for (size_t i = 12; i < packet.size(); i += 2)
            sent.push_back(static_cast<short>(qd_get_u16(header + i)));
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    EXPECT_NEAR(100 / took.count(), 10.0, 0.1);
    EXPECT_EQ(receiver.end(), 0);
    std::vector<short> looped;
    while (looped.size() < voice_.size() + sent.size())
        looped.insert(looped.end(), voice_.begin(), voice_.end());
    EXPECT_TRUE(qd_contains(looped, sent)) << "the microphone's samples without a gap";
    EXPECT_TRUE(qd_contains(
        qd_read_wav(dir_ / "port-1.wav"), std::span(sent).first(sent.size() - 5 * 800)));

    // As with a person at the windows: in automatic mode Talk does nothing.
    QD_Person person(sender);
    ASSERT_TRUE(person.look_at("Quendal"));
    const auto talk = [&] { person.click(22, 234); };
    const auto manual = [&] { person.click(73, 257); };
    talk();
    EXPECT_FALSE(silent());
    talk();
    manual();
    talk();
    EXPECT_TRUE(silent());
    talk();
    EXPECT_FALSE(silent());
    talk();
    EXPECT_TRUE(silent());
    manual();
    EXPECT_FALSE(silent()) << "automatic again, whatever Talk says";
    EXPECT_EQ(sender.end(), 0);
}
