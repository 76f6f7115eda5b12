// Sound through a real PulseAudio server, from one client's microphone to another's loudspeaker.
#include "tests/support/client_under_test.h"
#include "tests/support/pulse_server.h"
#include "tests/support/signal_math.h"
#include "tests/support/wav.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

constexpr double PLAYED_HZ = 440;
constexpr double SYNTHETIC_HZ = 1000;

// Whether both tones sound at the loudspeaker within a while.
bool both_are_heard(const QD_Pulse_Server& server)
{
    const QD_Pulse_Recording recording(server, QD_Pulse_Server::SPEAKER_MONITOR);
    return qd_wait_for(
        [&] {
            const std::vector<int16_t> heard = recording.samples();
            if (heard.size() < 8000)
                return false;
            const auto last = std::span(heard).last(8000);
            return qd_amplitude(last, PLAYED_HZ) > 500 && qd_amplitude(last, SYNTHETIC_HZ) > 500;
        },
        std::chrono::seconds(20));
}

}

TEST(Pulse, TwoSendersAreMixedAndComeBackAfterTheServerDies)
{
    const QD_X_Server x_server;
    QD_Pulse_Server server;
    ASSERT_TRUE(server.start());
    ASSERT_TRUE(qd_write_wav(server.directory() / "tone.wav", qd_sine(PLAYED_HZ, 8000 * 120)));
    const std::vector<std::string> player {"paplay",
        std::string("--device=") + QD_Pulse_Server::MIC_FEED, server.directory() / "tone.wav"};

    QD_Client_Under_Test::Set_Up recording;
    recording.mic = std::string("pulse:") + QD_Pulse_Server::MIC;
    QD_Client_Under_Test::Set_Up synthetic;
    synthetic.mic = "tone:" + std::to_string(static_cast<int>(SYNTHETIC_HZ));
    QD_Client_Under_Test::Set_Up listening;
    listening.speaker = std::string("pulse:") + QD_Pulse_Server::SPEAKER;
    listening.options_file = std::string(280, '\0');
    listening.options_file[3] = 3;
    listening.options_file[267] = static_cast<char>(200); // speaker volume

    QD_Client_Under_Test anna(2, recording);
    QD_Client_Under_Test bernt(3, synthetic);
    QD_Client_Under_Test chiara(4, listening);
    for (QD_Client_Under_Test* client : {&chiara, &anna, &bernt}) {
        ASSERT_TRUE(client->registered());
        for (int id = 2; id <= 4; ++id)
            client->framework().announce(id, id, "m" + std::to_string(id));
    }
    QD_Process playing(player);
    EXPECT_TRUE(both_are_heard(server));

    // The volume of the options file is set when the cut-off scale is moved: 200 of 255.
    QD_Person person(chiara);
    ASSERT_TRUE(person.look_at("Quendal"));
    person.click(120, 303);
    EXPECT_TRUE(qd_wait_for([&] {
        std::string inputs;
        server.run({"pactl", "list", "sink-inputs"}, &inputs);
        return inputs.find(std::to_string((200 * 65536 + 127) / 255) + " / ") != std::string::npos;
    }));

    server.crash();
    for (QD_Client_Under_Test* client : {&anna, &bernt, &chiara})
        EXPECT_TRUE(client->framework().settle()) << "the conference goes on without sound";
    ASSERT_TRUE(server.start());
    QD_Process playing_again(player);
    EXPECT_TRUE(both_are_heard(server));
    for (QD_Client_Under_Test* client : {&anna, &bernt, &chiara})
        EXPECT_EQ(client->end(), 0);
}
