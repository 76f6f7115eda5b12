// Sound and pictures of a real client while something that it waits for stands still.
#include "tests/support/client_under_test.h"
#include "tests/support/gaps.h"
#include "tests/support/signal_math.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

enum { CLIENT = 2, PEER, FILMING };

/// Sends a member's sound to the client, frame by frame at its pace.
class Speaker {
public:
    Speaker(const QD_Udp_Peer& peer, std::vector<short> voice) :
        voice_(std::move(voice)),
        thread_([this, &peer] { run(peer); })
    {
    }
    ~Speaker() { thread_.join(); }
    Speaker(const Speaker&) = delete;

private:
    void run(const QD_Udp_Peer& peer) const
    {
        auto next = std::chrono::steady_clock::now();
        for (size_t at = 0; at + 800 <= voice_.size(); at += 800, next += 100ms) {
            std::this_thread::sleep_until(next);
            std::string packet("\x80\x0f\0\0\0\0\0\0\0\0\0\3", 12);
            packet[3] = static_cast<char>(at / 800);
            for (size_t i = 0; i < 800; ++i) {
                packet += static_cast<char>(voice_[at + i] >> 8);
                packet += static_cast<char>(voice_[at + i]);
            }
            peer.send(packet, qd_test_host(CLIENT));
        }
    }

    const std::vector<short> voice_;
    std::thread thread_;
};

}

TEST(Stall, AStoppedDisplayCostsNoSoundAndPicturesComeBackAtOnce)
{
    QD_X_Server x_server;
    const QD_Temp_Dir dir;
    const QD_Udp_Peer peer(qd_test_host(PEER), 12567);
    QD_Client_Under_Test client(CLIENT, {.mic = "tone:440", .speaker = "file:" + dir.path()});
    QD_Client_Under_Test filming(FILMING, {.toolkit_options = {"-xrm", "*toggle.set: True"}});
    ASSERT_TRUE(client.meets({CLIENT, PEER, FILMING}));
    ASSERT_TRUE(filming.meets({FILMING, CLIENT}));
    QD_Person person(client);
    ASSERT_TRUE(person.look_at("m4@"));

    std::vector<short> voice;
    for (unsigned seed = 0; seed < 4; ++seed)
        std::ranges::copy(qd_noise(seed), std::back_inserter(voice)); // 12 s
    const std::string shoot = "import -window " + person.window() + " rgb:-";

    ASSERT_EQ(peer.receive().size(), 1612u) << "it speaks";
    QD_Gaps sent(peer, CLIENT);
    {
        const Speaker speaker(peer, voice);
        x_server.stop();
        sent.watch(5s);
        EXPECT_NEAR(sent.count(), 50, 1) << "while the display stood still";
        x_server.go_on();
        sent.watch(1s);
        const std::string seen = qd_output(shoot);
        EXPECT_TRUE(qd_wait_for([&] { return qd_output(shoot) != seen; }, 1s));
        sent.watch(5s);
    }
    EXPECT_LT(sent.longest(), 150ms);
    EXPECT_EQ(client.end(), 0);
    const std::vector<short> heard = qd_read_wav(dir / "port-1.wav");
    EXPECT_TRUE(qd_contains(heard, std::span(voice).first(size_t {80} * 800)));
    EXPECT_EQ(filming.end(), 0);
}
