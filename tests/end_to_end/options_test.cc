// The options dialog of the real client by the keyboard, and what other members and the file get.
#include "tests/support/client_under_test.h"
#include "tests/support/heard_tone.h"
#include "tests/support/udp_peer.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

constexpr int CLIENT = 2;
constexpr int HEARER = 3;
constexpr int CAPTURE = 9; // the test itself, a member who writes down what it gets

class OptionsTest : public testing::Test {
protected:
    OptionsTest()
    {
        x_server_.manage();
        std::string options(280, '\0');
        options[267] = options[271] = 125;
        options[275] = 7;
        client_.emplace(CLIENT,
            QD_Client_Under_Test::Set_Up {.mic = "tone:440",
                .options_file = options,
                .toolkit_options
                = {"-xrm", "*toggle.set: True", "-xrm", "*optionsWindow.geometry: +300+0"}});
        person_.emplace(*client_);
        for (QD_Client_Under_Test* client : {&*client_, &hearer_})
            EXPECT_TRUE(client->meets({CLIENT, HEARER, CAPTURE}));
    }

    // With the keyboard at the menu of connections.
    void open_dialog()
    {
        ASSERT_TRUE(person_->look_at("Quendal"));
        person_->press("ctrl+o");
        ASSERT_TRUE(person_->look_at("Options"));
        press({"Tab"});
    }

    /// Presses keys one by one, each when the last one's effect is seen.
    void press(std::initializer_list<const char*> keys) const
    {
        person_->focus();
        const auto look
            = [this] { return qd_output("import -window " + person_->window() + " ppm:-"); };
        for (const char* key : keys) {
            const std::string before = look();
            QD_Person::type({key});
            EXPECT_TRUE(qd_wait_for([&] { return look() != before; })) << key;
        }
    }

    /// Opens the menu that has the keyboard and chooses in it.
    void choose(std::vector<std::string> keys) const
    {
        press({"space"});
        keys.emplace_back("Return");
        QD_Person::type(keys);
    }

    /// Applies by the keyboard, from the control before OK, and comes back.
    void apply() const
    {
        press({"Tab", "Tab"});
        QD_Person::type({"space"});
        press({"shift+Tab", "shift+Tab"});
    }

    /// Whether three packets in a row come from the client with that payload type from now on.
    static bool sends(const QD_Udp_Peer& peer, int type)
    {
        while (!peer.receive(0).empty()) {}
        int right = 0;
        return qd_wait_for(
            [&] {
                const std::string packet = peer.receive();
                if (packet.size() > 12 && packet[11] == CLIENT)
                    right = (packet[1] & 0x7f) == type ? right + 1 : 0;
                return right == 3;
            },
            std::chrono::seconds(60));
    }

    /// A number of the file, as it is once it has been saved.
    bool file_has(size_t offset, char number) const
    {
        return qd_wait_for([&] {
            const std::string bytes = qd_read_file(client_->file(".qd.cfg"));
            return bytes.size() == 280 && bytes.substr(offset, 4) == std::string(3, '\0') + number;
        });
    }

    QD_X_Server x_server_;
    const QD_Udp_Peer audio_ {qd_test_host(CAPTURE), 12567};
    const QD_Udp_Peer video_ {qd_test_host(CAPTURE), 34999};
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
    EXPECT_TRUE(sends(audio_, 15)) << "until options are applied";
    open_dialog();
    struct {
        char connection;
        std::vector<std::string> keys;
        int audio, video;
        char fps;
    } const steps[] = {{1, {"Down"}, 13, 1, 5}, {2, {"Down"}, 13, 1, 7}, {3, {"Down"}, 15, 1, 10},
        {1, {"Up", "Up"}, 13, 1, 7}, {0, {"Up"}, 14, 0, 10},
        {3, {"Down", "Down", "Down"}, 15, 1, 7}};
    for (const auto& step : steps) {
        SCOPED_TRACE(int {step.connection});
        choose(step.keys);
        apply();
        EXPECT_TRUE(file_has(0, step.connection));
        EXPECT_TRUE(sends(audio_, step.audio));
        EXPECT_TRUE(qd_hears(dir_ / "port-1.wav", 440));
        EXPECT_TRUE(sends(video_, step.video));
        EXPECT_TRUE(file_has(272, step.fps));
    }
    for (const char* leave : {"Escape", "alt+F4"}) {
        choose({"Up"});
        QD_Person::type({leave});
        EXPECT_TRUE(person_->loses("Options"));
        EXPECT_TRUE(sends(audio_, 15));
        open_dialog();
    }
    choose({"Up", "Up", "Up"});
    apply();
    press({"shift+Tab", "Right", "Right", "Tab", "Home"}); // the scale of the video page
    QD_Person::type({"Return"});
    EXPECT_TRUE(file_has(0, 0) && file_has(272, 1));
    EXPECT_EQ(client_->end(), 0);
}
