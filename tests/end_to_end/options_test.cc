// The options dialog of the real client by the keyboard, and what other members and the file get.
#include "tests/support/client_under_test.h"
#include "tests/support/signal_math.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>
#include <numeric>

namespace {

constexpr int CLIENT = 2;
constexpr int HEARER = 3;
constexpr int CAPTURE = 9; // the test itself, a member who writes down what it gets
constexpr auto PATIENCE = std::chrono::seconds(60);

class OptionsTest : public testing::Test {
protected:
    OptionsTest() { x_server_.manage(); }

    void start(int connection, int fps, size_t length = 280)
    {
        std::string options(length, '\0');
        options[3] = static_cast<char>(connection);
        options[267] = options[271] = 125;
        options[275] = static_cast<char>(fps);
        client_.emplace(CLIENT,
            QD_Client_Under_Test::Set_Up {.mic = "tone:440",
                .options_file = options,
                .toolkit_options
                = {"-xrm", "*toggle.set: True", "-xrm", "*optionsWindow.geometry: +300+0"}});
        person_.emplace(*client_);
        for (QD_Client_Under_Test* client : {&*client_, &hearer_}) {
            client->framework().announce(CLIENT, CLIENT, "client");
            client->framework().announce(HEARER, HEARER, "hearer");
            client->framework().announce(CAPTURE, CAPTURE, "capture");
            ASSERT_TRUE(client->framework().settle());
        }
    }

    void open_dialog()
    {
        ASSERT_TRUE(person_->look_at("Quendal"));
        person_->press("ctrl+o");
        ASSERT_TRUE(person_->look_at("Options"));
    }

    std::string look() const
    {
        return qd_output("import -window " + person_->window() + " -depth 8 ppm:-");
    }

    /// Presses keys one by one, each when the last one's effect is seen.
    void press(std::initializer_list<const char*> keys) const
    {
        person_->focus();
        for (const char* key : keys) {
            const std::string before = look();
            qd_run({"xdotool", "key", key});
            EXPECT_TRUE(qd_wait_for([&] { return look() != before; })) << key;
        }
    }

    /// Opens the menu that has the keyboard and chooses in it.
    void choose(std::vector<std::string> keys) const
    {
        press({"space"});
        keys.insert(keys.begin(), {"xdotool", "key"});
        keys.emplace_back("Return");
        qd_run(keys);
    }

    /// Applies by the keyboard, from the control before OK, and comes back.
    void apply() const
    {
        press({"Tab", "Tab"});
        qd_run({"xdotool", "key", "space"});
        press({"shift+Tab", "shift+Tab"});
    }

    /// Whether three packets in a row come from the client with that payload type.
    static bool sends(const QD_Udp_Peer& peer, int type)
    {
        int right = 0;
        return qd_wait_for(
            [&] {
                const std::string packet = peer.receive();
                if (packet.size() > 12 && packet[11] == CLIENT)
                    right = (packet[1] & 0x7f) == type ? right + 1 : 0;
                return right == 3;
            },
            PATIENCE);
    }

    /// Whether half a second of the microphone's tone, and hardly anything else, comes from now on.
    bool is_heard() const
    {
        const std::string file = dir_ / "port-1.wav";
        const size_t begin = qd_read_wav(file).size() + 1600; // two packets may be on their way
        return qd_wait_for(
            [&] {
                const std::vector<short> heard = qd_read_wav(file);
                if (heard.size() < begin + 4000)
                    return false;
                const auto last = std::span(heard).last(4000);
                const double tone = qd_amplitude(last, 440);
                const double power
                    = std::inner_product(last.begin(), last.end(), last.begin(), 0.0) / 4000;
                return tone * tone / 2 > 0.98 * power;
            },
            PATIENCE);
    }

    /// Whether five gaps in a row between pictures are at least or at most so long.
    bool gaps(bool (*right)(std::chrono::milliseconds)) const
    {
        int count = 0;
        auto last = std::chrono::steady_clock::now();
        return qd_wait_for(
            [&] {
                const bool came = !video_.receive().empty();
                const auto now = std::chrono::steady_clock::now();
                const auto gap = std::chrono::duration_cast<std::chrono::milliseconds>(now - last);
                last = now;
                count = came && right(gap) ? count + 1 : 0;
                return count == 5;
            },
            PATIENCE);
    }

    /// A number of the file, as it is once it has been saved.
    bool file_has(size_t offset, uint32_t number) const
    {
        return qd_wait_for([&] {
            const std::string bytes = qd_read_file(client_->file(".qd.cfg"));
            return bytes.size() == 280
                && qd_get_u32(reinterpret_cast<const uint8_t*>(&bytes[offset])) == number;
        });
    }

    QD_X_Server x_server_;
    QD_Udp_Peer audio_ {qd_test_host(CAPTURE), 12567};
    QD_Udp_Peer video_ {qd_test_host(CAPTURE), 34999};
    const QD_Temp_Dir dir_;
    QD_Client_Under_Test hearer_ {HEARER, {.speaker = "file:" + dir_.path()}};
    std::optional<QD_Client_Under_Test> client_;
    std::optional<QD_Person> person_;
};

}

// The frame rates are no slips: a change of codec sets the rate of the new
// connection over the user's own, but LAN asks for the wrong codec, so that it
// keeps the rate after the modem and loses it after ISDN.
TEST_F(OptionsTest, EachConnectionChangesWhatIsSentAndOtherWaysOutKeepIt)
{
    start(0, 7);
    EXPECT_TRUE(sends(audio_, 15)) << "until options are applied";
    open_dialog();
    press({"Tab"});
    struct {
        uint32_t connection;
        std::vector<std::string> keys;
        int audio, video;
        uint32_t fps;
    } const steps[] = {{1, {"Down"}, 13, 1, 5}, {2, {"Down"}, 13, 1, 7}, {3, {"Down"}, 15, 1, 10},
        {1, {"Up", "Up"}, 13, 1, 7}, {0, {"Up"}, 14, 0, 10},
        {3, {"Down", "Down", "Down"}, 15, 1, 7}};
    for (const auto& step : steps) {
        SCOPED_TRACE(step.connection);
        choose(step.keys);
        apply();
        EXPECT_TRUE(file_has(0, step.connection));
        EXPECT_TRUE(sends(audio_, step.audio));
        EXPECT_TRUE(is_heard());
        EXPECT_TRUE(sends(video_, step.video));
        EXPECT_TRUE(file_has(272, step.fps));
    }
    const std::function<void()> ways_out[] = {[] {
                                                  qd_run({"xdotool", "key", "Escape"});
                                              },
        [this] { x_server_.press("F4", "alt"); }};
    for (const auto& leave : ways_out) {
        choose({"Up"});
        leave();
        EXPECT_TRUE(person_->loses("Options"));
        EXPECT_TRUE(sends(audio_, 15));
        open_dialog();
        press({"Tab"});
    }
    EXPECT_EQ(client_->end(), 0);
    EXPECT_TRUE(file_has(0, 3));
}

TEST_F(OptionsTest, AShortFileCountsForNothingAndTheFrameRateIsApplied)
{
    start(3, 7, 279);
    open_dialog();
    person_->press("Return");
    EXPECT_TRUE(sends(audio_, 14));
    EXPECT_TRUE(file_has(0, 0) && file_has(4, 1) && file_has(272, 5) && file_has(276, 0));

    open_dialog();
    press({"Right", "Right", "Tab", "Home"}); // the scale of the video page
    qd_run({"xdotool", "key", "Return"});
    EXPECT_TRUE(file_has(272, 1));
    EXPECT_TRUE(gaps([](std::chrono::milliseconds gap) { return gap.count() >= 500; }));

    open_dialog();
    press({"Right", "Right", "Tab", "Tab"});
    qd_run({"xdotool", "key", "space"}); // Default
    press({"Tab", "Tab"});
    qd_run({"xdotool", "key", "Tab", "Tab", "space"}); // Apply
    EXPECT_TRUE(file_has(272, 10));
    EXPECT_TRUE(gaps([](std::chrono::milliseconds gap) { return gap.count() <= 300; }));
    EXPECT_EQ(client_->end(), 0);
}
