// Sound between real clients: what one hears is what the other's microphone took.
#include "platform/base/bytes.h"
#include "tests/support/client_under_test.h"
#include "tests/support/signal_math.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

// As with a person at the windows: in automatic mode Talk does nothing.
void expect_talk_to_count(const QD_Client_Under_Test& sender, const QD_Udp_Peer& capture)
{
    const auto silent = [&] {
        // What was on its way, however much, then nothing for three frames.
        while (!capture.receive(0).empty()) {}
        for (int packets = 0; packets < 20; ++packets)
            if (capture.receive(350).empty())
                return true;
        return false;
    };
    QD_Person person(sender);
    ASSERT_TRUE(person.look_at("Quendal"));
    enum { TALK = 234, MANUAL = 257 }; // from the top
    struct {
        std::vector<int> clicks;
        bool silent;
    } const steps[] = {{{TALK}, false}, {{TALK, MANUAL, TALK}, true}, {{TALK}, false},
        {{TALK}, true}, {{MANUAL}, false}};
    for (const auto& step : steps) {
        for (int button : step.clicks)
            person.click(button == TALK ? 22 : 73, button);
        EXPECT_EQ(silent(), step.silent) << &step - steps;
    }
}

}

TEST(Sound, PcmIsBitExactAtTenPacketsASecondUntilTalkIsSwitchedOffByHand)
{
    constexpr int SENDER = 2;
    constexpr int RECEIVER = 3;
    constexpr int CAPTURE = 9; // the test itself, a member who writes down what it gets
    const QD_X_Server x_server;
    const QD_Temp_Dir dir;
    const std::vector<short> voice = qd_noise(7);
    qd_write_wav(dir / "voice.wav", voice);
    const QD_Udp_Peer capture(qd_test_host(CAPTURE), 12567);
    QD_Client_Under_Test receiver(RECEIVER, {.speaker = "file:" + dir.path()});
    QD_Client_Under_Test sender(SENDER, {.mic = "file:" + dir / "voice.wav"});
    for (QD_Client_Under_Test* client : {&receiver, &sender})
        ASSERT_TRUE(client->meets({SENDER, RECEIVER, CAPTURE}));

    std::vector<short> sent;
    uint32_t time = 0;
    auto begin = std::chrono::steady_clock::now();
    for (int count = 0; count <= 100; ++count) {
        std::string packet;
        do // the receiver is silent, and says so
            packet = capture.receive();
        while (packet.size() > 11 && packet[11] != SENDER);
        ASSERT_EQ(packet.size(), 1612u);
        EXPECT_EQ(packet.substr(0, 2) + packet.substr(8, 4), std::string("\x80\x0f\0\0\0\2", 6));
        const auto* bytes = reinterpret_cast<const uint8_t*>(packet.data());
        if (count == 0)
            begin = std::chrono::steady_clock::now();
        else
            EXPECT_LT(qd_get_u32(bytes + 4) - time, 1000U) << "milliseconds, going up";
        time = qd_get_u32(bytes + 4);
        for (size_t i = 12; i < packet.size(); i += 2)
            sent.push_back(static_cast<short>(qd_get_u16(bytes + i)));
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    EXPECT_NEAR(100 / took.count(), 10.0, 0.1);
    EXPECT_EQ(receiver.end(), 0);
    std::vector<short> looped;
    while (looped.size() < voice.size() + sent.size())
        looped.insert(looped.end(), voice.begin(), voice.end());
    EXPECT_TRUE(qd_contains(looped, sent)) << "the microphone's samples without a gap";
    sent.resize(sent.size() - size_t {5} * 800); // these may be on their way
    EXPECT_TRUE(qd_contains(qd_read_wav(dir / "port-1.wav"), sent));

    expect_talk_to_count(sender, capture);
    EXPECT_EQ(sender.end(), 0);
}
