// Sound and pictures of a real client while something that it waits for stands still.
#include "tests/support/client_under_test.h"
#include "tests/support/gaps.h"
#include "tests/support/signal_math.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace {

enum { CLIENT = 2, PEER };

/// A member who speaks, 800 samples in 100 ms, and shows raw pictures of changing brightness.
class Peer {
public:
    static constexpr size_t FRAME = 800;

    /// All that is said.
    explicit Peer(std::vector<short> voice) : voice_(std::move(voice)) {}
    ~Peer()
    {
        if (thread_.joinable())
            thread_.join();
    }
    Peer(const Peer&) = delete;

    const QD_Udp_Peer& sound() const { return sound_; }
    void start()
    {
        thread_ = std::thread([this] { run(); });
    }

private:
    void run() const
    {
        auto next = std::chrono::steady_clock::now();
        for (size_t frame = 0; frame < voice_.size() / FRAME; ++frame, next += 100ms) {
            std::this_thread::sleep_until(next);
            sound_.send(packet('\x0f', frame) + sound_of(frame), qd_test_host(CLIENT));
            const auto grey = static_cast<char>(40 + frame % 3 * 80);
            if (frame % 2 == 0)
                pictures_.send(packet('\x0a', frame) + std::string(12 + 28512 + 3, grey),
                    qd_test_host(CLIENT));
        }
    }

    static std::string packet(char type, size_t number)
    {
        return {'\x80', type, '\0', static_cast<char>(number), '\0', '\0', '\0', '\0', '\0', '\0',
            '\0', PEER};
    }

    std::string sound_of(size_t frame) const
    {
        std::string payload;
        for (size_t i = frame * FRAME; i < (frame + 1) * FRAME; ++i) {
            payload += static_cast<char>(voice_[i] >> 8);
            payload += static_cast<char>(voice_[i]);
        }
        return payload;
    }

    const std::vector<short> voice_;
    const QD_Udp_Peer sound_ {qd_test_host(PEER), 12567};
    const QD_Udp_Peer pictures_ {qd_test_host(PEER), 34999};
    std::thread thread_;
};

std::vector<short> seconds_of_voice(size_t count)
{
    std::vector<short> voice;
    for (unsigned seed = 0; voice.size() < count * 8000; ++seed)
        std::ranges::copy(qd_noise(seed), std::back_inserter(voice));
    voice.resize(count * 8000);
    return voice;
}

}

TEST(Stall, AStoppedDisplayCostsNoSoundAndPicturesComeBackAtOnce)
{
    const QD_X_Server x_server;
    const QD_Temp_Dir dir;
    const std::vector<short> voice = seconds_of_voice(15);
    QD_Client_Under_Test client(CLIENT, {.mic = "tone:440", .speaker = "file:" + dir.path()});
    Peer peer(voice);
    ASSERT_TRUE(client.meets({CLIENT, PEER}));
    ASSERT_EQ(peer.sound().receive().size(), 1612u) << "it speaks";
    peer.start();
    QD_Person person(client);
    ASSERT_TRUE(person.look_at("m3@"));
    const std::string shoot = "import -window " + person.window() + " rgb:-";

    QD_Gaps sent(peer.sound(), CLIENT);
    x_server.stop();
    sent.watch(5s);
    EXPECT_NEAR(sent.count(), 50, 1) << "while the display stood still";
    x_server.go_on();
    sent.watch(1s);
    const std::string seen = qd_output(shoot);
    EXPECT_TRUE(qd_wait_for([&] { return qd_output(shoot) != seen; }, 1s));
    sent.watch(3s);
    EXPECT_LT(sent.longest(), 150ms);
    EXPECT_EQ(client.end(), 0);
    const std::vector<short> heard = qd_read_wav(dir / "port-1.wav");
    EXPECT_TRUE(qd_contains(heard, std::span(voice).first(size_t {9} * 8000)));
}
