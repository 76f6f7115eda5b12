// Sound between real clients: what one hears is what the other's packets say.
#include "audio/adpcm.h"
#include "audio/gsm_codec.h"
#include "tests/support/client_under_test.h"
#include "tests/support/signal_math.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

constexpr int AUDIO_PORT = 12567;
constexpr int SENDER = 2;
constexpr int RECEIVER = 3;
constexpr int CAPTURE = 9; // the test itself, a member who writes down what it gets

using Samples = std::vector<short>;

const uint8_t* payload_of(const std::string& packet)
{
    return reinterpret_cast<const uint8_t*>(packet.data()) + 12;
}

Samples decode_pcm(const std::vector<std::string>& packets)
{
    Samples samples;
    for (const std::string& packet : packets)
        for (size_t i = 0; i < 800; ++i)
            samples.push_back(static_cast<short>(qd_get_u16(payload_of(packet) + 2 * i)));
    return samples;
}

Samples decode_adpcm(const std::vector<std::string>& packets)
{
    Samples samples;
    for (const std::string& packet : packets) {
        const uint8_t* payload = payload_of(packet);
        adpcm_state state {static_cast<short>(qd_get_u16(payload)), payload[2]};
        short out[800];
        adpcm_decoder(payload + 3, out, 800, &state);
        samples.insert(samples.end(), out, out + 800);
    }
    return samples;
}

// With the library alone, one state from the first packet on.
Samples decode_gsm(const std::vector<std::string>& packets)
{
    Samples samples;
    gsm state = gsm_create();
    for (const std::string& packet : packets)
        for (int i = 0; i < 5; ++i) {
            gsm_byte frame[33];
            std::copy_n(payload_of(packet) + 33 * i, 33, frame);
            gsm_signal out[160];
            gsm_decode(state, frame, out);
            samples.insert(samples.end(), out, out + 160);
        }
    gsm_destroy(state);
    return samples;
}

class SoundTest : public testing::Test {
protected:
    SoundTest() : capture_(qd_test_host(CAPTURE), AUDIO_PORT)
    {
        static const QD_X_Server x_server;
        qd_write_wav(dir_.file("voice.wav"), voice_);
    }

    QD_Client_Under_Test::Set_Up speaking(const std::string& options_file = "") const
    {
        return {.mic = "file:" + dir_.file("voice.wav"), .options_file = options_file};
    }

    QD_Client_Under_Test::Set_Up listening() const { return {.speaker = "file:" + dir_.path()}; }

    // Everybody knows the sender, the receiver and the capture.
    static void announce_all(QD_Client_Under_Test& client)
    {
        client.framework().announce(SENDER, SENDER, "sender");
        client.framework().announce(RECEIVER, RECEIVER, "receiver");
        client.framework().announce(CAPTURE, CAPTURE, "capture");
        ASSERT_TRUE(client.framework().settle());
    }

    // The next packets from the sender of one payload type.
    std::vector<std::string> capture(size_t count, int pt) const
    {
        std::vector<std::string> packets;
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (packets.size() < count && std::chrono::steady_clock::now() < end) {
            const std::string packet = capture_.receive();
            if (packet.empty())
                break;
            if (packet[11] == SENDER && (packet[1] & 0x7f) == pt)
                packets.push_back(packet);
        }
        return packets;
    }

    const Samples voice_ = qd_noise(7);
    QD_Temp_Dir dir_;
    QD_Udp_Peer capture_;
};

}

TEST_F(SoundTest, PcmIsBitExactFromMicrophoneToLoudspeakerAtTenPacketsASecond)
{
    ASSERT_TRUE(capture_.bound());
    QD_Client_Under_Test receiver(RECEIVER, listening());
    QD_Client_Under_Test sender(SENDER, speaking());
    ASSERT_TRUE(sender.registered() && receiver.registered());
    announce_all(receiver);
    announce_all(sender);

    auto packets = capture(1, 15);
    const auto begin = std::chrono::steady_clock::now();
    const auto more = capture(100, 15);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    packets.insert(packets.end(), more.begin(), more.end());
    ASSERT_EQ(packets.size(), 101u);
    EXPECT_NEAR(100 / took.count(), 10.0, 0.1);

    uint16_t seq = qd_get_u16(payload_of(packets[0]) - 10);
    uint32_t time = qd_get_u32(payload_of(packets[0]) - 8);
    for (const std::string& packet : packets) {
        ASSERT_EQ(packet.size(), 1612u);
        EXPECT_EQ(packet.substr(0, 2), "\x80\x0f");
        EXPECT_EQ(qd_get_u16(payload_of(packet) - 10), seq++);
        EXPECT_LT(qd_get_u32(payload_of(packet) - 8) - time, 1000u) << "milliseconds, going up";
        time = qd_get_u32(payload_of(packet) - 8);
        EXPECT_EQ(qd_get_u32(payload_of(packet) - 4), static_cast<uint32_t>(SENDER));
    }
    EXPECT_EQ(receiver.end(), 0);
    EXPECT_EQ(sender.end(), 0);

    const Samples sent = decode_pcm(packets);
    Samples looped;
    while (looped.size() < voice_.size() + sent.size())
        looped.insert(looped.end(), voice_.begin(), voice_.end());
    EXPECT_TRUE(qd_contains(looped, sent)) << "the microphone's samples without a gap";
    EXPECT_TRUE(qd_contains(
        qd_read_wav(dir_.file("port-1.wav")), decode_pcm({packets.begin(), packets.end() - 5})));
}

// The connection type in the options file is taken up when the cut-off scale is moved.
TEST_F(SoundTest, AdpcmAndGsmAreHeardAsTheirPacketsDecode)
{
    struct {
        const char* name;
        int connection;
        int pt;
        size_t size;
        Samples (*decode)(const std::vector<std::string>&);
    } const codecs[] = {{"ADPCM", 1, 13, 1600, decode_adpcm}, {"GSM", 0, 14, 165, decode_gsm}};
    for (const auto& codec : codecs) {
        SCOPED_TRACE(codec.name);
        std::string options(280, '\0');
        options[3] = static_cast<char>(codec.connection);
        options[267] = options[271] = 125;
        QD_Client_Under_Test sender(SENDER, speaking(options));
        QD_Person person(sender);
        announce_all(sender);
        ASSERT_EQ(capture(1, 15).size(), 1u) << "PCM until the options are applied";
        ASSERT_TRUE(person.look_at("Quendal"));
        person.click(120, 303); // right of the slider
        ASSERT_EQ(capture(1, codec.pt).size(), 1u);

        // From here on everything is coded: a receiver that comes now hears nothing else.
        QD_Client_Under_Test receiver(RECEIVER, listening());
        announce_all(receiver);
        const auto all = capture(25, codec.pt);
        ASSERT_EQ(all.size(), 25u);
        for (const std::string& packet : all)
            EXPECT_EQ(packet.size(), 12 + codec.size);
        EXPECT_EQ(receiver.end(), 0);
        EXPECT_EQ(sender.end(), 0);

        // The receiver came in the middle of the capture and left after it.
        const Samples heard = qd_read_wav(dir_.file("port-1.wav"));
        ASSERT_GE(heard.size(), 8000u);
        bool equal = false;
        for (size_t first = 0; first < all.size() - 10 && !equal; ++first) {
            const Samples expected
                = codec.decode({all.begin() + static_cast<ptrdiff_t>(first), all.end()});
            const size_t common = std::min(heard.size(), expected.size());
            equal = common > 8000
                && std::equal(heard.begin(), heard.begin() + static_cast<ptrdiff_t>(common),
                    expected.begin());
        }
        EXPECT_TRUE(equal);
    }
}

// As with a person at the windows: in automatic mode Talk does nothing, by hand it silences.
TEST_F(SoundTest, TalkCountsOnlyWhileSwitchedByHand)
{
    QD_Client_Under_Test sender(SENDER, speaking());
    QD_Person person(sender);
    announce_all(sender);
    const auto silent = [&] {
        // What was on its way, however much, then nothing for three frames.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
        while (std::chrono::steady_clock::now() < end)
            if (capture_.receive(350).empty())
                return true;
        return false;
    };
    ASSERT_TRUE(person.look_at("Quendal"));
    ASSERT_EQ(capture(1, 15).size(), 1u);
    person.click(22, 234); // Talk off
    EXPECT_FALSE(silent());
    person.click(22, 234); // on again
    person.click(73, 257); // Manual
    person.click(22, 234); // off: now it counts
    EXPECT_TRUE(silent());
    person.click(22, 234);
    EXPECT_FALSE(silent());
    person.click(22, 234);
    EXPECT_TRUE(silent());
    person.click(73, 257); // automatic again: talking whatever Talk says
    EXPECT_FALSE(silent());
    EXPECT_EQ(sender.end(), 0);
}
