// The statistics window of a live conference against a capture of the same packets.
#include "tests/support/program.h"

#include "tests/support/client_under_test.h"
#include "tests/support/udp_peer.h"

#include <Xm/List.h>

TEST(Statistics, OfAMemberAgreeWithACapture)
{
    enum { ME = 1, CAPTURE, ANNA };
    QD_Program program;
    const QD_Udp_Peer audio(qd_test_host(CAPTURE), 12567); // is sent what I am sent
    const QD_Udp_Peer video(qd_test_host(CAPTURE), 34999);
    for (int member : {ME, CAPTURE, ANNA})
        program.framework.announce(member, member, "m");
    const QD_Session_Ref session;
    EXPECT_TRUE(program.run_until([&] { return session->get_member(ANNA) != nullptr; }));
    QD_Client_Under_Test anna(
        ANNA, {.mic = "tone:330", .toolkit_options = {"-xrm", "*toggle.set: True"}});
    EXPECT_TRUE(anna.meets({ME, CAPTURE, ANNA}));

    Widget window = dynamic_cast<MainForm*>(session->getMainForm())->getStatWnd()->base_widget();
    const auto figure = [&](const char* field) { return atof(qd_text(window, field).c_str()); };
    const auto select = [&] { // as a click at Anna's line does
        XmListSelectPos(qd_find(window, "statUsersList"), ANNA, True);
    };
    // Five seconds, which is what the rates are of.
    int heard = 0; // of hers
    const auto hear = [&] {
        for (std::string packet; !(packet = audio.receive(0)).empty();)
            heard += packet[11] == ANNA;
    };
    EXPECT_TRUE(program.run_until([&] { return hear(), heard > 50; }));
    select();
    EXPECT_NEAR(figure("audioBwdText"), 128, 40);
    EXPECT_NEAR(figure("videoFpsText"), 5, 3);
    EXPECT_GT(figure("videoBdwText"), 0);

    EXPECT_EQ(anna.end(), 0);
    hear();
    int seen = 0;
    while (!video.receive(0).empty())
        ++seen;
    // The first packets are counted nowhere.
    EXPECT_TRUE(program.run_until([&] {
        select();
        return figure("audioRecText") == heard - 1 && figure("videoRecText") == seen - 1;
    })) << heard
        << " " << seen;
    EXPECT_EQ(figure("audioLostText") + figure("videoLostText"), 0);
}
