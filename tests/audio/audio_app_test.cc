#include "audio/audio_app.h"

#include "tests/support/session.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wait.h"
#include "tests/support/wav.h"

namespace {

// Microphone: a tone. Loudspeaker: files. The local member has id 1.
class AudioAppTest : public QD_Session_Test {
protected:
    AudioAppTest()
    {
        setenv("QD_MIC", "tone:440", 1);
        setenv("QD_SPEAKER", ("file:" + home_.path()).c_str(), 1);
        app_.emplace();
        join(1, 1);
        join(2, 2);
    }

    std::vector<short> played(int port) const
    {
        return qd_read_wav(home_.file("port-" + std::to_string(port) + ".wav"));
    }

    std::optional<QD_AudioApp> app_;
};

}

TEST_F(AudioAppTest, PacketsOfTheWrongKindAreDroppedAndShortOnesCountedUnplayed)
{
    EXPECT_EQ(receive(*app_, 2, QD_AudioApp::PCM, "", 1), -1);
    EXPECT_EQ(receive(*app_, 3, QD_AudioApp::PCM, ""), -2) << "no member";
    EXPECT_FALSE(session_->get_member(2)->get_audio_data());
    for (auto [type, needed] : {std::pair(15u, 1600u), {13u, 403u}, {14u, 165u}, {99u, 2000u}})
        for (size_t len : {size_t {0}, size_t {needed - 1}})
            EXPECT_EQ(receive(*app_, 2, type, std::string(len, '\x55')), 0);
    EXPECT_EQ(session_->get_member(2)->get_audio_data()->frames_received, 7);
    app_->show_levels();
    EXPECT_EQ(form_.speaker_level, 0);
}

TEST_F(AudioAppTest, EachSenderIsHeardOnAPortOfItsOwn)
{
    for (int id = 2; id <= 102; ++id) {
        join(id, 2);
        EXPECT_EQ(receive(*app_, id, QD_AudioApp::PCM, std::string(1603, id == 101 ? 3 : 1)), 0);
    }
    app_->show_levels();
    EXPECT_EQ(form_.speaker_level, 0x303) << "the loudest of those just heard";
    EXPECT_EQ(receive(*app_, 3, QD_AudioApp::STOPPED, ""), 0);
    EXPECT_EQ(form_.speaker_level, 0);
    // The first hundred fill all slots. One of them leaves: the last one has its place.
    session_->delete_member(50);
    receive(*app_, 102, QD_AudioApp::PCM, std::string(1600, 5));
    EXPECT_TRUE(qd_wait_for([&] { return !played(101).empty(); }));
    EXPECT_TRUE(qd_wait_for([&] { return app_->show_levels(), form_.speaker_level == 0; }));
    app_.reset();
    EXPECT_EQ(played(100), std::vector<short>(800, 0x303));
    EXPECT_EQ(played(101), std::vector<short>(800, 0x505));
}

TEST_F(AudioAppTest, APacketThatComesTwiceIsCountedTwiceAndPlayedOnce)
{
    const auto receive_one = [&](uint16_t seq, uint32_t ts, char sample) {
        rtp_fix_header header {2, 0, 0, 0, 0, QD_AudioApp::PCM, seq, ts, 2};
        std::string payload(1600, sample);
        EXPECT_EQ(app_->process_message(&header, payload.data(), 1600), 0);
    };
    receive_one(1, 100, 1);
    receive_one(1, 100, 2);
    receive_one(2, 200, 3);
    receive_one(1, 100, 4);
    EXPECT_TRUE(qd_wait_for([&] { return played(1).size() == 1600; }));
    receive_one(1, 300, 5); // of a member who has begun again
    EXPECT_TRUE(qd_wait_for([&] { return played(1).size() == 2400; }));
    EXPECT_EQ(session_->get_member(2)->get_audio_data()->frames_received, 4);
    const std::vector<short> heard = played(1);
    EXPECT_EQ((std::array {heard[0], heard[800], heard[1600]}),
        (std::array<short, 3> {0x101, 0x303, 0x505}));
}

TEST_F(AudioAppTest, BelowTheCutOffNothingIsSent)
{
    const QD_Udp_Peer peer(qd_test_host(2), QD_AudioApp::PORT);
    ASSERT_EQ(app_->init(), 0);
    _options options;
    options.connection = static_cast<Connection>(-1);
    app_->update_options(&options);
    EXPECT_TRUE(qd_wait_for([&] { return peer.receive()[1] == 14; })) << "no connection has GSM";
    options.mic_cutoff = 60; // the tone is half of the full scale, 49
    app_->update_options(&options);
    EXPECT_TRUE(qd_wait_for([&] { return peer.receive(350).empty(); }));
    app_->close();
}
