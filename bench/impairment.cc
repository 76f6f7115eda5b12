// What a bad network does to sound and pictures between two real clients, with
// a relay between them. Exits non-zero if sound is not back under 300 ms of
// delay within a second.
#include "bench/heard.h"
#include "bench/relay.h"
#include "bench/seen.h"
#include "tests/support/video_window.h"
#include "tests/support/x_server.h"

#include <cstdio>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using Clock = std::chrono::steady_clock;

constexpr int AUDIO_PORT = 12567;
constexpr int VIDEO_PORT = 34999;
constexpr int ANNA = 2;
constexpr int BERNT = 3;
constexpr int RELAY = 20; // where Anna believes Bernt to be
constexpr double MOST_DELAY_MS = 300;
constexpr double NEVER = 9999;

struct Case {
    const char* name;
    QD_Impairment impairment;
    void (QD_Relay::*fail)(milliseconds) = nullptr;
};
constexpr Case CASES[] = {
    {"none", {}},
    {"loss 5 %", {.loss = 5}},
    {"loss 10 %", {.loss = 10}},
    {"loss 20 %", {.loss = 20}},
    {"loss 30 %", {.loss = 30}},
    {"delay 100 ms", {.delay_ms = 100}},
    {"jitter 50 ms", {.jitter_ms = 50}},
    {"reordering 10 %", {.reordered = 10}},
    {"duplication 10 %", {.duplicated = 10}},
    {"cut of 5 s", {}, &QD_Relay::cut},
    {"stall of 5 s", {}, &QD_Relay::stall},
};

constexpr seconds IMPAIRED {10};
constexpr seconds FAILING {5};
constexpr seconds GOOD {4}; // after either

class Conference {
public:
    Conference()
    {
        anna_.framework().announce(ANNA, ANNA, "anna");
        anna_.framework().announce(BERNT, RELAY, "bernt");
        bernt_.framework().announce(BERNT, BERNT, "bernt");
        bernt_.framework().announce(ANNA, ANNA, "anna");
    }

    /// Whether sound and pictures come through.
    bool starts()
    {
        QD_Person person(bernt_);
        return sound_.bound() && pictures_.bound() && qd_shows(bernt_, "anna@", 0)
            && person.look_at("anna@") && seeing_.look_at(std::stoul(person.window()))
            && qd_wait_for([&] { return hearing_.note(); });
    }

    /// One line of the table. Returns 0, 1 if the delay stays.
    int run(const Case& the_case)
    {
        seeing_.forget();
        const Clock::time_point begin = Clock::now();
        const size_t first = hearing_.noted();
        for (QD_Relay* relay : {&sound_, &pictures_})
            if (the_case.fail != nullptr)
                (relay->*the_case.fail)(FAILING);
            else
                relay->impair(the_case.impairment);
        watch(the_case.fail != nullptr ? FAILING : IMPAIRED);
        const Clock::time_point end = Clock::now();
        const size_t last = hearing_.noted();
        for (QD_Relay* relay : {&sound_, &pictures_})
            relay->impair({});
        watch(GOOD);

        const QD_Hearing::Report heard = hearing_.report(first, last);
        const double delay = heard.delays_ms.empty() ? NEVER : heard.delays_ms.back();
        const QD_Seeing::Report seen = seeing_.report(begin, end);
        printf("| %s | %.1f %% | %.0f ms | %.0f ms | %.1f | %.0f %% | %.1f s |\n", the_case.name,
            heard.right * 100, heard.gap_ms, delay, seen.per_second, seen.whole * 100,
            seeing_.whole_after(end));
        fflush(stdout);
        return delay < MOST_DELAY_MS ? 0 : 1;
    }

private:
    void watch(seconds time)
    {
        const Clock::time_point end = Clock::now() + time;
        for (auto next = Clock::now(); next < end; next += milliseconds(10)) {
            std::this_thread::sleep_until(next);
            hearing_.note();
            seeing_.note();
        }
    }

    QD_Client_Under_Test::Set_Up speaking() const
    {
        qd_write_wav(voice_, QD_Counted_Voice().samples());
        return {.mic = "file:" + voice_, .toolkit_options = qd_seeing_options(0)};
    }
    QD_Client_Under_Test::Set_Up listening() const
    {
        return {.speaker = "file:" + dir_.path(), .toolkit_options = qd_seeing_options(1)};
    }

    const QD_X_Server x_server_ {"1430x800x24"};
    const QD_Temp_Dir dir_;
    const std::string voice_ = dir_ / "voice.wav";
    QD_Relay sound_ {qd_test_host(RELAY), qd_test_host(BERNT), AUDIO_PORT, 1};
    QD_Relay pictures_ {qd_test_host(RELAY), qd_test_host(BERNT), VIDEO_PORT, 2};
    QD_Client_Under_Test bernt_ {BERNT, listening()};
    QD_Client_Under_Test anna_ {ANNA, speaking()};
    QD_Hearing hearing_ {anna_.pid(), voice_, dir_ / "mix.wav"};
    QD_Seeing seeing_ {0};
};

}

int main()
{
    Conference conference;
    if (!conference.starts()) {
        fprintf(stderr, "no sound or no pictures\n");
        return 1;
    }
    printf("budget: 300 ms of delay from 1 s afterwards on\n"
           "| network | heard | silence | delay | pictures/s | whole | all whole after |\n"
           "|---|---|---|---|---|---|---|\n");
    int missed = 0;
    for (const Case& one : CASES)
        missed |= conference.run(one);
    return missed;
}
