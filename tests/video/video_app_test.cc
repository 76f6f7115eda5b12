#include "video/video_app.h"

#include "tests/support/session.h"
#include "tests/support/udp_peer.h"

using namespace std::chrono_literals;

namespace {

constexpr int PEER = 9;

class VideoApp : public QD_Session_Test {
protected:
    VideoApp()
    {
        setenv("QD_CAMERA", "testcard", 1);
        std::filesystem::current_path(home_.path());
        app_.emplace();
        join(7, 1);
        join(PEER, 2);
    }
    ~VideoApp() override
    {
        app_->close();
        std::filesystem::current_path("/");
    }

    void apply(int connection, int fps)
    {
        _options options;
        options.connection = static_cast<Connection>(connection);
        options.fps_max = fps;
        app_->update_options(&options);
    }

    // Waits for a packet of that kind among those that the peer gets.
    std::string packet(int type) const
    {
        for (int more = 40; more > 0; --more) {
            const std::string got = peer_.receive(1500);
            if (got.size() > 28 && got[1] == type)
                return got;
        }
        ADD_FAILURE();
        return std::string(29, '\0');
    }

    const QD_Udp_Peer peer_ {qd_test_host(2), QD_VideoApp::PORT};
    std::optional<QD_VideoApp> app_;
};

}

TEST_F(VideoApp, SendsWhatItsCameraSeesAndAppliesOptionsAtOnce)
{
    ASSERT_EQ(app_->init(), 0);
    app_->play();
    for (int i = 0; i < 21; ++i) {
        const std::string got = packet(0);
        EXPECT_EQ(got[12], i + 1);
        EXPECT_EQ((got[28] & 2) == 0, i % 10 == 0) << "intra, " << i;
    }
    app_->stop();
    while (!peer_.receive(300).empty()) {}
    EXPECT_EQ(serve().back(), "closed") << "and not opened again";
    app_->play();
    for (int fps : {1, 2000000000, -5}) {
        apply(_lan, fps);
        packet(1);
        const auto begin = std::chrono::steady_clock::now();
        apply(77, fps); // what is no connection has H.263
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 1300ms) << "not after the pause";
        packet(0);
    }
}

TEST_F(VideoApp, RefusesWhatIsNoPicture)
{
    EXPECT_EQ(receive(*app_, 12345, 0, ""), -1) << "no member";
    EXPECT_EQ(receive(*app_, PEER, 0, "", 1), -1) << "no version 2";
    EXPECT_FALSE(session_->get_member(PEER)->get_video_data());

    const std::string raw = std::string(12, 'h') + std::string(25344 + 3168, 'y') + "end";
    for (const std::string& bad : {std::string(), raw.substr(0, 15)})
        for (unsigned type : {0, 1, 10, 99})
            EXPECT_EQ(receive(*app_, PEER, type, bad), 0);
    EXPECT_EQ(receive(*app_, PEER, 10, raw.substr(1)), 0);
    EXPECT_EQ(session_->get_member(PEER)->get_video_data()->frames_received, 8);
    EXPECT_TRUE(serve().empty());
    for (const char* done : {"shown", "prepared", "drew 121"}) {
        EXPECT_EQ(receive(*app_, PEER, 10, raw), 0);
        EXPECT_EQ(serve().front(), done);
    }
    EXPECT_EQ(qd_read_file("video.log").substr(0, 27), "id: 1\n31\n32\n33\n34\n39\n40\nid:");
}

TEST_F(VideoApp, TheHundredAndFirstWhoComesIsSeen)
{
    for (int round = 0; round < 130; ++round) {
        join(PEER, 2);
        EXPECT_EQ(receive(*app_, PEER, QD_VideoApp::H261, std::string(16, 'x')), 0);
        EXPECT_EQ(serve().front(), "shown") << round;
        session_->delete_member(PEER);
    }
}
