// The statistics window of a live conference against a capture of the same packets.
#include "tests/support/program.h"

#include "tests/support/client_under_test.h"
#include "tests/support/relay.h"

#include <Xm/List.h>
#include <Xm/TextF.h>

namespace {

constexpr int ME = 1;
constexpr int ANNA = 2;
constexpr int BERNT = 3;  // the test itself, with packets as it likes
constexpr int RELAY = 20; // where Anna believes me to be
constexpr int AUDIO_PORT = 12567;
constexpr int VIDEO_PORT = 34999;

class Statistics : public testing::Test {
protected:
    Statistics()
    {
        program_.framework.announce(ME, ME, "me");
        program_.framework.announce(ANNA, ANNA, "anna");
        program_.framework.announce(BERNT, BERNT, "bernt");
        program_.handle_all();
        stat_
            = dynamic_cast<MainForm*>(QD_Session_Ref()->getMainForm())->getStatWnd()->baseWidget();
    }

    double figure(const std::string& field) const
    {
        char* text = XmTextFieldGetString(qd_find(stat_, field.c_str()));
        const double number = atof(text);
        XtFree(text);
        return number;
    }

    // As a click at the list's line does.
    void select(int member) const
    {
        XmListSelectPos(qd_find(stat_, "statUsersList"), member, True);
    }

    // Reads the figures again until so many were received: what was sent may be on its way.
    void expect_received(int member, const std::string& field, size_t count)
    {
        const auto equal = [&] { return figure(field) == static_cast<double>(count); };
        EXPECT_TRUE(program_.run_until([&] {
            select(member);
            return equal();
        })) << field
            << " " << figure(field) << " of " << count;
    }

    // A packet of silence, of Bernt's making.
    void send(unsigned seq) const
    {
        std::string packet("\x80\x0f\0\0\0\0\0\0\0\0\0\x03", 12);
        packet[2] = static_cast<char>(seq >> 8);
        packet[3] = static_cast<char>(seq);
        packet.resize(12 + 1600);
        ASSERT_TRUE(bernt_.send(packet, qd_test_host(ME)));
    }

    QD_Relay audio_ {qd_test_host(RELAY), qd_test_host(ME), AUDIO_PORT, 1};
    QD_Relay video_ {qd_test_host(RELAY), qd_test_host(ME), VIDEO_PORT, 1};
    const QD_Udp_Peer bernt_ {qd_test_host(BERNT), AUDIO_PORT};
    QD_Program program_;
    Widget stat_ = nullptr;
};

}

TEST_F(Statistics, OfThreeMembersAgreeWithACapture)
{
    ASSERT_TRUE(audio_.bound() && video_.bound() && bernt_.bound());
    QD_Client_Under_Test anna(
        ANNA, {.mic = "tone:330", .toolkit_options = {"-xrm", "*toggle.set: True"}});
    anna.framework().announce(ANNA, ANNA, "anna");
    anna.framework().announce(BERNT, BERNT, "bernt");
    anna.framework().announce(ME, RELAY, "me");

    // Five seconds, which is what the rates are of. They are those of the moment of selection:
    // nothing refreshes them while packets come.
    const auto passes = [this](size_t count) {
        return program_.run_until([&] { return audio_.log().size() > count; });
    };
    EXPECT_TRUE(passes(50));
    select(ANNA);
    EXPECT_NEAR(figure("audioBwdText"), 128, 40);
    EXPECT_NEAR(figure("videoFpsText"), 5, 3);
    EXPECT_GT(figure("videoBdwText"), 0);
    const double then = figure("audioRecText");
    EXPECT_TRUE(passes(audio_.log().size() + 10));
    EXPECT_EQ(figure("audioRecText"), then);

    // Around the wrap, and overtaken ones; all behind the wrap count as lost, and the first
    // nowhere.
    for (unsigned seq : {65530, 65531, 65533, 65532, 65534, 65535, 0, 1, 2, 3, 4, 5, 65535})
        send(seq);
    expect_received(BERNT, "audioRecText", 12);
    EXPECT_EQ(figure("audioLostText"), 7);
    EXPECT_EQ(figure("audioTotalText"), 19);
    EXPECT_EQ(figure("videoRecText"), 0) << "no pictures of his";

    for (QD_Relay* relay : {&audio_, &video_}) {
        relay->drop(100);
        EXPECT_TRUE(program_.run_until([&] { return relay->dropped() > 0; })) << "the log is whole";
    }
    expect_received(ANNA, "audioRecText", audio_.log().size() - 1);
    expect_received(ANNA, "videoRecText", video_.log().size() - 1);
    EXPECT_EQ(figure("audioLostText") + figure("videoLostText"), 0);
    EXPECT_EQ(anna.end(), 0);
}
