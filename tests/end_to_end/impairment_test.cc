// A network that fails for a while, and the delay of sound after it.
#include "tests/support/client_under_test.h"
#include "tests/support/heard.h"
#include "tests/support/relay.h"
#include "tests/support/x_server.h"

#include <gtest/gtest.h>

namespace {

constexpr int AUDIO_PORT = 12567;
constexpr int ANNA = 2;
constexpr int BERNT = 3;
constexpr int RELAY = 20; // where Anna believes Bernt to be

void listen(QD_Hearing& hearing, std::chrono::milliseconds time)
{
    for (const auto end = QD_Hearing::Clock::now() + time; QD_Hearing::Clock::now() < end;) {
        EXPECT_TRUE(hearing.note());
        std::this_thread::sleep_for(std::chrono::milliseconds(10)); // the devices' beat
    }
}

}

TEST(Impairment, SoundIsNoMoreThan300MsLateASecondAfterTheNetworkFailed)
{
    using std::chrono::seconds;
    const QD_X_Server x_server;
    const QD_Temp_Dir dir;
    qd_write_wav(dir / "voice.wav", QD_Counted_Voice().samples());
    QD_Relay relay(qd_test_host(RELAY), qd_test_host(BERNT), AUDIO_PORT, 1);
    ASSERT_TRUE(relay.bound());
    QD_Client_Under_Test bernt(BERNT, {.speaker = "file:" + dir.path()});
    QD_Client_Under_Test anna(ANNA, {.mic = "file:" + dir / "voice.wav"});
    bernt.framework().announce(BERNT, BERNT, "bernt");
    bernt.framework().announce(ANNA, ANNA, "anna");
    anna.framework().announce(ANNA, ANNA, "anna");
    anna.framework().announce(BERNT, RELAY, "bernt");
    QD_Hearing hearing(anna.pid(), dir / "voice.wav", dir / "mix.wav");
    ASSERT_TRUE(qd_wait_for([&] { return hearing.note() && relay.log().size() > 5; }));

    for (const auto fail : {&QD_Relay::cut, &QD_Relay::stall}) {
        const size_t first = hearing.noted();
        (relay.*fail)(seconds(2));
        listen(hearing, seconds(2));
        const size_t last = hearing.noted();
        listen(hearing, std::chrono::milliseconds(2200));
        const QD_Hearing::Report report = hearing.report(first, last);
        EXPECT_GT(report.gap_ms, 1000) << "it failed";
        ASSERT_FALSE(report.delays_ms.empty()) << "it came back";
        EXPECT_LT(report.delays_ms[report.delays_ms.size() / 2], 300);
    }
    EXPECT_EQ(anna.end(), 0);
    EXPECT_EQ(bernt.end(), 0);
}
