// Pictures between real clients: what a window shows is what its member's camera saw.
#include "platform/vl/test_card.h"
#include "platform/vl/vl.h"
#include "tests/support/client_under_test.h"
#include "tests/support/relay.h"
#include "tests/support/udp_peer.h"
#include "tests/support/x_server.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

constexpr int VIDEO_PORT = 34999;
constexpr int ANNA = 2;
constexpr int BERNT = 3;
constexpr int RELAY = 20; // where Anna believes Bernt to be
const char* const CARDS[] = {"testcard:0", "testcard:120"};

struct Colour {
    double red, green, blue;
    double distance(const Colour& other) const
    {
        return std::max({std::abs(red - other.red), std::abs(green - other.green),
            std::abs(blue - other.blue)});
    }
};

// A picture of a window, by the import program.
class Shot {
public:
    explicit Shot(const std::string& file)
    {
        std::ifstream in(file, std::ios::binary);
        std::string kind;
        int depth = 0;
        in >> kind >> width_ >> height_ >> depth;
        in.get();
        pixels_.assign(std::istreambuf_iterator<char>(in), {});
        good_ = kind == "P6" && depth == 255
            && pixels_.size() == static_cast<size_t>(width_) * static_cast<size_t>(height_) * 3;
    }

    bool good() const { return good_ && width_ >= 176 && height_ >= 144; }

    // The mean of the 8 x 8 points from there on.
    Colour at(int left, int top) const
    {
        Colour mean {};
        for (int y = top; y < top + 8; ++y)
            for (int x = left; x < left + 8; ++x) {
                const auto* point = reinterpret_cast<const uint8_t*>(
                    &pixels_[static_cast<size_t>(y * width_ + x) * 3]);
                mean.red += point[0] / 64.0;
                mean.green += point[1] / 64.0;
                mean.blue += point[2] / 64.0;
            }
        return mean;
    }

    std::string picture() const
    {
        std::string rows;
        for (int y = 0; y < 144; ++y)
            rows += pixels_.substr(static_cast<size_t>(y * width_) * 3, 176 * 3);
        return rows;
    }

private:
    int width_ = 0;
    int height_ = 0;
    std::string pixels_;
    bool good_ = false;
};

// What the test card of a hue has at a place, as ITU-R BT.601 makes colours of it.
Colour card_at(int hue, int left, int top)
{
    std::string card(QD_PICTURE_SIZE, '\0');
    QD_Test_Card(hue).paint(0, card.data());
    const auto* plane = reinterpret_cast<const uint8_t*>(card.data());
    const int x = left + 4;
    const int y = top + 4;
    const double luma = 1.164 * (plane[y * 176 + x] - 16);
    const double u = plane[QD_U_OFFSET + y / 2 * 88 + x / 2] - 128;
    const double v = plane[QD_V_OFFSET + y / 2 * 88 + x / 2] - 128;
    const auto cut = [](double value) { return std::clamp(value, 0.0, 255.0); };
    return {cut(luma + 1.596 * v), cut(luma - 0.392 * u - 0.813 * v), cut(luma + 2.017 * u)};
}

class PicturesTest : public testing::Test {
protected:
    static void SetUpTestSuite() { x_server_ = new QD_X_Server("1430x800x24"); }
    static void TearDownTestSuite() { delete x_server_; }

    // A client with its camera on, its video windows in a row of their own.
    static QD_Client_Under_Test::Set_Up seeing(int index, const std::string& options_file = "")
    {
        QD_Client_Under_Test::Set_Up set_up;
        set_up.camera = CARDS[index];
        set_up.options_file = options_file;
        const std::string y = std::to_string(400 * index);
        for (const std::string& resource :
            {std::string("*toggle.set: True"), std::string("*videoX: 300"), "*videoY: " + y}) {
            set_up.toolkit_options.emplace_back("-xrm");
            set_up.toolkit_options.push_back(resource);
        }
        set_up.toolkit_options.emplace_back("-geometry");
        set_up.toolkit_options.push_back("+0+" + y);
        return set_up;
    }

    static Shot shoot(const QD_Client_Under_Test& viewer, int member)
    {
        QD_Person person(viewer);
        if (!person.look_at("m" + std::to_string(member) + "@"))
            return Shot("");
        const std::string file = viewer.file("shot.ppm");
        qd_run({"import", "-window", person.window(), "-depth", "8", file});
        return Shot(file);
    }

    // Whether the viewer's window of that member shows the card of that hue.
    static bool shows(const QD_Client_Under_Test& viewer, int member, int hue)
    {
        return qd_wait_for(
            [&] {
                const Shot shot = shoot(viewer, member);
                if (!shot.good())
                    return false;
                bool right = true;
                for (auto [x, y] :
                    {std::pair {29, 4}, {95, 4}, {117, 4}, {139, 4}, {8, 92}, {160, 132}})
                    right = right && shot.at(x, y).distance(card_at(hue, x, y)) < 40;
                return right;
            },
            std::chrono::seconds(20));
    }

    static QD_X_Server* x_server_;
};

QD_X_Server* PicturesTest::x_server_ = nullptr;

int figure(const std::string& log, const std::string& before)
{
    const size_t at = log.find(before);
    return at == std::string::npos ? -1 : atoi(&log[at + before.size()]);
}

}

TEST_F(PicturesTest, EveryWindowShowsItsMembersCamera)
{
    QD_Client_Under_Test anna(ANNA, seeing(0));
    QD_Client_Under_Test bernt(BERNT, seeing(1));
    for (QD_Client_Under_Test* client : {&anna, &bernt})
        for (int member : {ANNA, BERNT})
            client->framework().announce(member, member, "m" + std::to_string(member));
    for (QD_Client_Under_Test* client : {&anna, &bernt}) {
        EXPECT_TRUE(shows(*client, ANNA, 0));
        EXPECT_TRUE(shows(*client, BERNT, 120));
    }
    // Who leaves takes the window along; the others go on.
    anna.framework().remove(BERNT, BERNT);
    ASSERT_TRUE(anna.framework().settle());
    EXPECT_TRUE(shows(anna, ANNA, 0));
    EXPECT_EQ(bernt.end(), 0);
    EXPECT_EQ(anna.end(), 0);
    EXPECT_GT(figure(bernt.log(), "QD_VideoApp: sent "), 0);
    EXPECT_NE(bernt.log().find(", shown "), std::string::npos);
}

TEST_F(PicturesTest, LostPacketsFreezeNothingAndPicturesRecover)
{
    QD_Relay relay(qd_test_host(RELAY), qd_test_host(BERNT), VIDEO_PORT, 1);
    ASSERT_TRUE(relay.bound());
    QD_Client_Under_Test anna(ANNA, seeing(0));
    QD_Client_Under_Test bernt(BERNT, seeing(1));
    anna.framework().announce(ANNA, ANNA, "m2");
    anna.framework().announce(BERNT, RELAY, "m3");
    bernt.framework().announce(BERNT, BERNT, "m3");
    bernt.framework().announce(ANNA, ANNA, "m2");
    EXPECT_TRUE(shows(bernt, ANNA, 0));
    for (int percent : {5, 20}) {
        relay.drop(percent);
        const int dropped = relay.dropped();
        std::string last;
        for (int changes = 0; changes < 8; ++changes)
            EXPECT_TRUE(qd_wait_for([&] {
                const std::string now = shoot(bernt, ANNA).picture();
                return now != last && (last = now, true);
            })) << "the clock in the picture runs";
        EXPECT_TRUE(
            qd_wait_for([&] { return relay.dropped() > dropped; }, std::chrono::seconds(30)));
        relay.drop(0);
        EXPECT_TRUE(shows(bernt, ANNA, 0));
    }
    EXPECT_EQ(anna.end(), 0);
    EXPECT_EQ(bernt.end(), 0);
}

// The test itself is the sender: a picture every 40 ms, of either codec.
TEST_F(PicturesTest, TwentyFiveAreReceivedAndTwentyFiveDrawnEachSecond)
{
    H263initEncoder(QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT);
    init_codec();
    init_encoder();
    qd_set_video_rate(1500, 25);
    constexpr int SENT = 100;
    const QD_Udp_Peer sender(qd_test_host(ANNA), VIDEO_PORT);
    ASSERT_TRUE(sender.bound());
    for (int type : {0, 1}) {
        SCOPED_TRACE(type);
        QD_Client_Under_Test bernt(BERNT, {});
        bernt.framework().announce(BERNT, BERNT, "m3");
        bernt.framework().announce(ANNA, ANNA, "m2");
        ASSERT_TRUE(bernt.framework().settle());
        auto next = std::chrono::steady_clock::now();
        for (int number = 0; number < SENT; ++number) {
            std::string card(QD_PICTURE_SIZE, '\0');
            QD_Test_Card(240).paint(number * 40, card.data());
            std::string packet(12 + 12 + QD_CODED_SIZE + 3, '\0');
            packet[0] = '\x80';
            packet[1] = static_cast<char>(type);
            packet[3] = static_cast<char>(number);
            packet[11] = ANNA;
            char* coded = packet.data() + 24;
            const char* picture = card.data();
            int size = 0;
            if (number % 10 == 0)
                size = type == 0 ? H263codeIntraFrame(picture, coded)
                                 : p64EncodeIntraFrame(picture, coded);
            else
                size = type == 0 ? H263codeFrame(&picture, coded) : p64EncodeFrame(picture, coded);
            ASSERT_GT(size, 0);
            packet.resize(static_cast<size_t>(24 + size + 3));
            ASSERT_TRUE(sender.send(packet, qd_test_host(BERNT)));
            next += std::chrono::milliseconds(40);
            std::this_thread::sleep_until(next); // the pace is what is tested
        }
        EXPECT_TRUE(shows(bernt, ANNA, 240));
        EXPECT_EQ(bernt.end(), 0);
        // The first picture opens the window and the second prepares it.
        EXPECT_GE(figure(bernt.log(), "shown "), SENT - 4);
    }
}
