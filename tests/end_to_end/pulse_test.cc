// Sound through a real PulseAudio server, from one client's microphone to another's loudspeaker.
#include "tests/support/client_under_test.h"
#include "tests/support/pulse_server.h"
#include "tests/support/signal_math.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <gmock/gmock.h>

namespace {

// Whether both tones sound at the loudspeaker within a while.
bool both_are_heard()
{
    const QD_Temp_Dir dir;
    const std::string file = dir / "heard";
    const QD_Process recorder({"parec", "-d", "speaker.monitor", "--file-format=wav", "--rate=8000",
        "--channels=1", "--latency-msec=20", file});
    return qd_wait_for(
        [&] {
            const std::vector<short> heard = qd_read_wav(file);
            if (heard.size() < 8000)
                return false;
            const auto last = std::span(heard).last(8000);
            return qd_amplitude(last, 440) > 500 && qd_amplitude(last, 1000) > 500;
        },
        std::chrono::seconds(20));
}

// Whether those of all the clients' streams come to be the volumes.
bool volumes_are(const std::string& streams, const std::string& wanted)
{
    const std::string list = "pactl list " + streams + " | grep front- | grep -o '[0-9]*%'";
    return qd_wait_for([&] { return qd_output(list + " | sort -n | xargs") == wanted + "\n"; });
}

}

TEST(Pulse, TwoSendersAreMixedAndComeBackAfterTheServerDies)
{
    const QD_X_Server x_server;
    QD_Pulse_Server server;
    ASSERT_TRUE(server.start());
    const QD_Temp_Dir dir;
    const std::string tone = dir / "tone.wav";
    qd_output("ffmpeg -nostdin -f lavfi -i sine=440:duration=120 " + tone);
    const std::vector<std::string> player {"paplay", "--device=micfeed", tone};

    QD_Client_Under_Test anna(2, {.mic = "pulse:microphone"});
    QD_Client_Under_Test bernt(3, {.mic = "tone:1000"});
    QD_Client_Under_Test chiara(4,
        {.mic = "pulse:microphone",
            .speaker = "pulse:trumpet",
            .toolkit_options = {"-geometry", "+40+50"}});
    for (QD_Client_Under_Test* client : {&chiara, &anna, &bernt})
        ASSERT_TRUE(client->meets({2, 3, 4}));
    QD_Process playing(player);
    EXPECT_TRUE(both_are_heard());
    EXPECT_THAT(chiara.log(), testing::HasSubstr("pulse:trumpet: PulseAudio has no such sink"));

    // Both dials of the options dialog, turned by the keyboard: the microphone's
    // ends at 191, and the device takes that for an attenuation.
    QD_Person person(chiara);
    ASSERT_TRUE(person.look_at("Quendal"));
    EXPECT_THAT(
        qd_output("xdotool getwindowgeometry " + person.window()), testing::HasSubstr("40,50"));
    person.press("ctrl+o");
    ASSERT_TRUE(person.look_at("Options"));
    person.focus();
    QD_Person::type({"Right", "Tab", "End", "Next", "Tab", "End", "Return"});
    EXPECT_TRUE(volumes_are("sink-inputs", "90% 90% 90% 90%"));
    EXPECT_TRUE(volumes_are("source-outputs", "25% 25% 100% 100%"));

    server.crash();
    for (QD_Client_Under_Test* client : {&anna, &bernt, &chiara})
        EXPECT_TRUE(client->framework().settle()) << "the conference goes on without sound";
    ASSERT_TRUE(server.start());
    QD_Process playing_again(player);
    EXPECT_TRUE(both_are_heard());
    EXPECT_TRUE(volumes_are("source-outputs", "25% 25% 100% 100%"));
    chiara.framework().remove(3, 3);
    EXPECT_TRUE(volumes_are("sink-inputs", "90% 90%"));
    for (QD_Client_Under_Test* client : {&anna, &bernt, &chiara})
        EXPECT_EQ(client->end(), 0);
}
