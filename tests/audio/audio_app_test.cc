#include "audio/audio_app.h"

#include "platform/net/bytes.h"
#include "tests/support/session.h"
#include "tests/support/udp_peer.h"
#include "tests/support/wait.h"
#include "tests/support/wav.h"

namespace {

constexpr int SAMPLES = QD_AudioApp::FRAME;

// 800 samples that are 1, 2, 3... times `step`.
std::string pcm_payload(int step)
{
    std::string payload(QD_AudioApp::PCM_SIZE, '\0');
    auto* bytes = reinterpret_cast<uint8_t*>(payload.data());
    for (int i = 0; i < SAMPLES; ++i)
        qd_put_u16(bytes + 2 * i, static_cast<uint16_t>((i + 1) * step));
    return payload;
}

// Microphone: a tone. Loudspeaker: files. The local member has id 1.
class AudioAppTest : public QD_Session_Test {
protected:
    AudioAppTest()
    {
        setenv("QD_MIC", "tone:440", 1);
        setenv("QD_SPEAKER", ("file:" + home_.path()).c_str(), 1);
    }

    static int receive(
        QD_AudioApp& app, int id, unsigned pt, std::string payload, unsigned version = 2)
    {
        rtp_fix_header header;
        header.type = version;
        header.ssrc = static_cast<unsigned>(id);
        header.pt = pt;
        return app.process_message(&header, payload.data(), static_cast<int>(payload.size()));
    }

    int received(int id) const
    {
        QD_Session_Hold hold(session_);
        const UserData* figures = session_->get_member(id)->get_audio_data();
        return figures == nullptr ? -1 : figures->frames_received;
    }

    std::string port(int n) const { return home_.file("port-" + std::to_string(n) + ".wav"); }
    bool played(int n) const { return !qd_read_wav(port(n)).empty(); }
};

}

TEST_F(AudioAppTest, PacketsOfTheWrongKindAreDroppedAndShortOnesCountedUnplayed)
{
    join(1, 1);
    join(2, 2);
    {
        QD_AudioApp app;
        rtp_fix_header header;
        char none = 0;
        EXPECT_EQ(app.process_message(&header, &none, -1), -1) << "shorter than a header";
        EXPECT_EQ(receive(app, 2, QD_AudioApp::PCM, pcm_payload(1), 1), -1);
        EXPECT_EQ(receive(app, 3, QD_AudioApp::PCM, pcm_payload(1)), -2);
        EXPECT_EQ(received(2), -1);

        const struct {
            unsigned pt;
            int needed;
        } codecs[] = {{QD_AudioApp::PCM, 1600}, {QD_AudioApp::ADPCM, 403}, {QD_AudioApp::GSM, 165}};
        int count = 0;
        for (const auto& codec : codecs)
            for (int len : {0, 1, codec.needed - 1}) {
                // A buffer of just that length: reading on would be seen by the address sanitizer.
                const std::string payload(static_cast<size_t>(len), '\x55');
                EXPECT_EQ(receive(app, 2, codec.pt, payload), 0);
                EXPECT_EQ(received(2), count++);
            }
        EXPECT_EQ(receive(app, 2, 99, pcm_payload(1)), 0) << "an unknown codec plays nothing";
    }
    EXPECT_FALSE(played(1));
    EXPECT_EQ(form_.speaker_level, -1);
}

TEST_F(AudioAppTest, EachSenderIsHeardOnAPortOfItsOwn)
{
    join(1, 1);
    join(2, 2);
    join(3, 3);
    join(4, 3);
    {
        QD_AudioApp app;
        receive(app, 2, QD_AudioApp::PCM, pcm_payload(2) + "whatever follows");
        receive(app, 3, QD_AudioApp::PCM, pcm_payload(3));
        app.show_levels();
        EXPECT_EQ(form_.speaker_level, 800 * 3) << "the loudest of those just heard";
        EXPECT_TRUE(qd_wait_for([&] { return played(1) && played(2); }));
        for (int talk = 0; talk < 2; ++talk) {
            receive(app, 4, QD_AudioApp::PCM, pcm_payload(1));
            EXPECT_EQ(receive(app, 4, QD_AudioApp::STOPPED, ""), 0);
            EXPECT_EQ(receive(app, 4, QD_AudioApp::STOPPED, ""), 0) << "even without a port";
            EXPECT_EQ(form_.speaker_level, 0);
        }
        EXPECT_TRUE(qd_wait_for([&] { return std::filesystem::exists(port(4)); }))
            << "who talks again has another port";
        EXPECT_TRUE(qd_wait_for([&] {
            app.show_levels();
            return form_.speaker_level == 0;
        })) << "and silence afterwards";
    }
    for (int sender : {2, 3}) {
        const std::vector<short> samples = qd_read_wav(port(sender - 1));
        ASSERT_EQ(samples.size(), 800u);
        EXPECT_EQ(samples[0], sender);
        EXPECT_EQ(samples[799], 800 * sender);
    }
}

TEST_F(AudioAppTest, AHundredAndOneJoinersAreHeardAndSoIsTheOneWhoComesLater)
{
    join(1, 1);
    QD_AudioApp app;
    for (int id = 2; id <= 102; ++id) {
        join(id, 2);
        EXPECT_EQ(receive(app, id, QD_AudioApp::PCM, pcm_payload(1)), 0);
    }
    // The first hundred fill all slots. One of them leaves: the 101st has its place.
    session_->delete_member(50);
    receive(app, 102, QD_AudioApp::PCM, pcm_payload(1));
    EXPECT_TRUE(qd_wait_for([&] { return played(101); }));
    session_->delete_member(60);
    join(60, 2);
    receive(app, 60, QD_AudioApp::PCM, pcm_payload(1));
    EXPECT_TRUE(qd_wait_for([&] { return played(102); }));
}

TEST_F(AudioAppTest, WhatIsSentFollowsTheConnectionAndTheCutOff)
{
    QD_Udp_Peer peer(qd_test_host(2), QD_AudioApp::PORT);
    ASSERT_TRUE(peer.bound());
    QD_AudioApp app;
    ASSERT_EQ(app.init(), 0);
    join(1, 1);
    join(2, 2);
    EXPECT_EQ(peer.receive()[1], 15) << "PCM until options are applied";
    _options* options = session_->get_options();
    for (int connection : {4, -1}) {
        options->connection = static_cast<Connection>(connection);
        app.update_options(options);
        EXPECT_TRUE(qd_wait_for([&] { return peer.receive()[1] == 14; })) << connection;
    }
    EXPECT_EQ(peer.receive().size(), 12u + 165) << "what is no connection has GSM";
    app.show_levels();
    EXPECT_NEAR(form_.mic_level, 16384, 700);

    // Half of the full scale is a level of 49: at a cut-off of 60 nothing goes
    // out, yet the own frames are counted.
    options->mic_cutoff = 60;
    app.update_options(options);
    while (!peer.receive(250).empty()) {}
    const int before = received(1);
    EXPECT_TRUE(qd_wait_for([&] { return received(1) > before + 1; }));
    EXPECT_EQ(peer.receive(0), "");
    app.close();
}

TEST(AudioLevel, IsTheLargestSampleAndNegativePeaksDoNotCount)
{
    EXPECT_EQ(QD_AudioApp::get_level(std::vector<short> {}), 0);
    EXPECT_EQ(QD_AudioApp::get_level(std::vector<short> {-32768, -5}), 0);
    EXPECT_EQ(QD_AudioApp::get_level(std::vector<short> {3, 32767, 100}), 32767);
}

TEST(LevelHold, FallsBackOnceTheFrameIsOver)
{
    QD_Level_Hold hold;
    const QD_Clock::Time start = QD_Clock::real().now();
    hold.store(500, start);
    hold.store(200, start + std::chrono::milliseconds(100));
    EXPECT_EQ(hold.read(start + std::chrono::milliseconds(150)), 500);
    EXPECT_EQ(hold.read(start + std::chrono::milliseconds(151)), 200);
    EXPECT_EQ(hold.read(start + std::chrono::milliseconds(251)), 0);
}
