// Sound through a real PulseAudio server, from one client's microphone to another's loudspeaker.
#include "tests/support/client_under_test.h"
#include "tests/support/pulse_server.h"
#include "tests/support/signal_math.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

// Whether both tones sound at the loudspeaker within a while.
bool both_are_heard(const QD_Pulse_Server& server)
{
    const QD_Pulse_Recording recording(server);
    return qd_wait_for(
        [&] {
            const std::vector<int16_t> heard = recording.samples();
            if (heard.size() < 8000)
                return false;
            const auto last = std::span(heard).last(8000);
            return qd_amplitude(last, 440) > 500 && qd_amplitude(last, 1000) > 500;
        },
        std::chrono::seconds(20));
}

}

TEST(Pulse, TwoSendersAreMixedAndComeBackAfterTheServerDies)
{
    const QD_X_Server x_server;
    QD_Pulse_Server server;
    ASSERT_TRUE(server.start());
    const std::string tone = server.directory().file("tone.wav");
    qd_write_wav(tone, qd_sine(440, 8000 * 120));
    const std::vector<std::string> player {"paplay", "--device=micfeed", tone};

    QD_Client_Under_Test anna(2, {.mic = "pulse:microphone"});
    QD_Client_Under_Test bernt(3, {.mic = "tone:1000"});
    QD_Client_Under_Test chiara(4, {.mic = "pulse:microphone", .speaker = "pulse:speaker"});
    for (QD_Client_Under_Test* client : {&chiara, &anna, &bernt}) {
        ASSERT_TRUE(client->registered());
        for (int id = 2; id <= 4; ++id)
            client->framework().announce(id, id, "m" + std::to_string(id));
    }
    QD_Process playing(player);
    EXPECT_TRUE(both_are_heard(server));

    // Both dials of the options dialog, turned up by the keyboard: the microphone's
    // ends at 191, and the device takes that for an attenuation.
    QD_Person person(chiara);
    ASSERT_TRUE(person.look_at("Quendal"));
    person.press("ctrl+o");
    ASSERT_TRUE(person.look_at("Options"));
    person.focus();
    QD_Person::type({"Right", "Tab", "End", "Tab", "End", "Return"});
    const auto has_volume = [](const char* streams, int of_255) {
        const std::string volume = " " + std::to_string((of_255 * 65536 + 127) / 255) + " / ";
        return qd_wait_for([&] { return qd_output(streams).find(volume) != std::string::npos; });
    };
    EXPECT_TRUE(has_volume("pactl list sink-inputs", 255));
    EXPECT_TRUE(has_volume("pactl list source-outputs", 255 - 191));

    server.crash();
    for (QD_Client_Under_Test* client : {&anna, &bernt, &chiara})
        EXPECT_TRUE(client->framework().settle()) << "the conference goes on without sound";
    ASSERT_TRUE(server.start());
    QD_Process playing_again(player);
    EXPECT_TRUE(both_are_heard(server));
    for (QD_Client_Under_Test* client : {&anna, &bernt, &chiara})
        EXPECT_EQ(client->end(), 0);
}
