#include "video/video_app.h"

#include "platform/net/bytes.h"
#include "platform/vl/codec.h"
#include "tests/support/pictures.h"
#include "tests/support/session.h"
#include "tests/support/udp_peer.h"

#include <optional>

using namespace std::chrono_literals;

namespace {

constexpr int LOCAL = 7;
constexpr int PEER = 9;

struct Packet {
    int type;
    unsigned seq;
    int number;
    unsigned seconds, microseconds;
    std::string bits;
};

class VideoApp : public QD_Session_Test {
protected:
    VideoApp()
    {
        setenv("QD_CAMERA", "testcard", 1);
        std::filesystem::current_path(home_.path());
        session_->set_display_factory(&displays_);
        app_ = std::make_unique<QD_VideoApp>();
    }
    ~VideoApp() override
    {
        app_->close();
        app_.reset();
        session_->reset(); // its members have windows of ours
        std::filesystem::current_path("/");
    }

    _options* options(Connection connection, int fps)
    {
        session_->get_options()->connection = connection;
        session_->get_options()->fps_max = fps;
        return session_->get_options();
    }

    // Hands the application a packet as if it had come from `id`.
    int receive(int type, std::string payload, int id = PEER, int version = 2)
    {
        rtp_fix_header header;
        header.type = static_cast<unsigned>(version);
        header.pt = static_cast<unsigned>(type);
        header.ssrc = static_cast<uint32_t>(id);
        return app_->process_message(&header, payload.data(), static_cast<int>(payload.size()));
    }

    // Coded pictures, the first of them intra, as payloads.
    static std::vector<std::string> payloads(QD_Codec codec, const std::vector<std::string>& of)
    {
        QD_Picture_Encoder encoder(codec);
        EXPECT_EQ(encoder.open(10, QD_CODED_SIZE), 0);
        std::vector<std::string> coded;
        for (const std::string& picture : of) {
            std::string out(QD_CODED_SIZE, '\0');
            const int n = encoder.encode(picture.data(), coded.empty(), 4, out.data());
            coded.push_back(std::string(12, 'h') + out.substr(0, static_cast<size_t>(n)) + "end");
        }
        return coded;
    }

    // Lets the member windows catch up; returns what became of them since.
    std::vector<std::string> serve()
    {
        displays_.log.clear();
        for (int i = 0; i < 4; ++i)
            session_->handle_member_events();
        return displays_.log;
    }

    // The line of the trace that names the peer.
    std::string id() const
    {
        return "id: " + std::to_string(session_->get_member(PEER)->get_internal_id()) + "\n";
    }

    std::string trace_since(size_t& from) const
    {
        const std::string all = qd_read_file(home_.file("video.log"));
        const std::string part = all.substr(from);
        from = all.size();
        return part;
    }

    // What the peer gets next.
    std::optional<Packet> next(int milliseconds = 3000) const
    {
        const std::string datagram = peer_.receive(milliseconds);
        if (datagram.size() < 28)
            return std::nullopt;
        const auto* wire = reinterpret_cast<const uint8_t*>(datagram.data());
        EXPECT_EQ(wire[0], 0x80);
        EXPECT_EQ(qd_get_u32(wire + 8), static_cast<uint32_t>(LOCAL));
        return Packet {wire[1] & 0x7f, qd_get_u16(wire + 2), wire[12], qd_get_u32(wire + 16),
            qd_get_u32(wire + 20), datagram.substr(24, datagram.size() - 27)};
    }

    // Whether a packet of the type is soon among those the peer gets.
    bool comes_to_send(int type) const
    {
        auto packet = next();
        for (int more = 40; packet && packet->type != type && more > 0; --more)
            packet = next();
        return packet && packet->type == type;
    }

    static bool is_h263_intra(const Packet& p) { return (p.bits[4] & 2) == 0; }

    const QD_Udp_Peer peer_ {qd_test_host(2), QD_VideoApp::PORT};
    QD_Fake_Displays displays_;
    std::unique_ptr<QD_VideoApp> app_;
};

}

TEST_F(VideoApp, SendsWhatItsCameraSeesAndAppliesOptionsAtOnce)
{
    ASSERT_EQ(app_->init(), 0);
    ASSERT_TRUE(peer_.bound());
    join(PEER, 2);
    app_->play(); // no local member: nothing
    join(LOCAL, 1);
    EXPECT_FALSE(next(50));
    app_->play();
    app_->play();
    std::string stream;
    for (int i = 0; i < 21; ++i) {
        const auto packet = next();
        ASSERT_TRUE(packet) << i;
        EXPECT_EQ(packet->type, 0) << "H.263 until options are applied";
        EXPECT_EQ(packet->number, i + 1);
        EXPECT_EQ(is_h263_intra(*packet), i % 10 == 0) << i;
        EXPECT_NEAR(packet->seconds, time(nullptr), 30);
        EXPECT_LT(packet->microseconds, 1000000u);
        stream += packet->bits;
    }
    EXPECT_EQ(qd_ffmpeg_decode("h263", stream).size(), size_t {QD_PICTURE_SIZE} * 21);

    app_->update_options(options(_modem28, 10));
    auto packet = next();
    while (packet && packet->number < 31 && !is_h263_intra(*packet)) // some were on their way
        packet = next();
    ASSERT_TRUE(packet);
    EXPECT_LT(packet->number, 31) << "intra as options changed, not as it was the turn";
    app_->update_options(options(_lan, 30));
    EXPECT_TRUE(comes_to_send(1));

    app_->stop();
    while (next(300)) {}
    serve();
    EXPECT_EQ(displays_.open, 0) << "closed and not opened again";
    app_->play();
    EXPECT_TRUE(next());

    for (int fps : {1, 30, -5, 2000000000}) {
        const auto begin = std::chrono::steady_clock::now();
        app_->update_options(options(static_cast<Connection>(77), fps));
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 1300ms) << "not after the pause";
        EXPECT_TRUE(comes_to_send(0)) << "what is no connection has H.263; " << fps;
    }
}

TEST_F(VideoApp, ShowsWhatOthersSend)
{
    join(LOCAL, 1);
    join(PEER, 2);
    size_t read = 0;
    EXPECT_EQ(trace_since(read), "");
    const struct {
        QD_Codec codec;
        int type;
        const char* trace;
    } cases[] = {
        {QD_Codec::H263, 0, "31\n32\n33\n34\n35\n36\n37\n38\n39\n40\n"},
        {QD_Codec::H261, 1, "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n"},
    };
    for (const auto& c : cases) {
        const std::string picture(QD_PICTURE_SIZE, static_cast<char>(100 + c.type * 20));
        std::vector<std::string> log;
        for (const std::string& coded : payloads(c.codec, {picture, picture, picture})) {
            EXPECT_EQ(receive(c.type, coded), 0);
            EXPECT_EQ(trace_since(read), id() + c.trace);
            log = serve(); // the first two open and prepare the window
        }
        EXPECT_EQ(log.at(0), "drew " + std::to_string(100 + c.type * 20));
    }
    std::string raw
        = std::string(12, 'h') + std::string(25344, 'y') + std::string(3168, 'c') + "end";
    EXPECT_EQ(receive(10, raw), 0);
    EXPECT_EQ(serve().at(0), "drew 121");
    raw.pop_back();
    EXPECT_EQ(receive(10, raw), 0) << "too short: counted, not shown";
    EXPECT_TRUE(serve().empty());

    EXPECT_EQ(receive(5, ""), 0);
    EXPECT_EQ(displays_.open, 1);
    EXPECT_EQ(serve().at(0), "closed");
    EXPECT_EQ(receive(3, "anything"), 0);
    EXPECT_EQ(serve().size(), 2u) << "made and shown";
    EXPECT_EQ(receive(99, "anything"), 0);
    EXPECT_TRUE(serve().empty());
    const QD_Session_Hold hold(session_);
    EXPECT_EQ(session_->get_member(PEER)->get_video_data()->frames_received, 10);
}

TEST_F(VideoApp, RefusesWhatIsNoPicture)
{
    join(LOCAL, 1);
    join(PEER, 2);
    const std::string good = payloads(QD_Codec::H263, {qd_test_picture(0)})[0];
    EXPECT_EQ(receive(0, good, 12345), -1) << "no member";
    EXPECT_EQ(receive(0, good, PEER, 1), -1) << "no version 2";
    rtp_fix_header header;
    header.ssrc = PEER;
    char nothing = 0;
    EXPECT_EQ(app_->process_message(&header, &nothing, -1), -1) << "shorter than a header";
    EXPECT_FALSE(session_->get_member(PEER)->get_video_data());

    size_t read = 0;
    for (size_t length : {0, 1, 12, 14, 15, 16, 30}) {
        const std::string bad(length, '\0');
        for (int type : {0, 1, 10})
            EXPECT_EQ(receive(type, bad), 0);
        EXPECT_TRUE(
            trace_since(read).starts_with(id() + "31\n32\n33\n34\n39\n40\n" + id() + "1\n2\n3\n"));
        if (length < 16) {
            EXPECT_TRUE(serve().empty()) << length;
        }
    }
    serve();
    EXPECT_EQ(receive(0, good), 0);
    EXPECT_FALSE(serve().empty());
}

TEST_F(VideoApp, WhoComesAgainIsDecodedAfreshAndTheHundredAndFirstIsSeen)
{
    const auto coded = payloads(QD_Codec::H263, {qd_test_picture(0), qd_test_picture(1)});
    for (int round = 0; round < 130; ++round) {
        join(PEER, 2);
        EXPECT_EQ(receive(0, coded[1]), 0);
        EXPECT_TRUE(serve().empty()) << "nothing to predict from in round " << round;
        EXPECT_EQ(receive(0, coded[0]), 0);
        EXPECT_FALSE(serve().empty());
        session_->delete_member(PEER);
    }
}
