// How late things come between two real clients: a sound, from the microphone
// to the far loudspeaker; a picture, from the camera to the far window. Between
// them stands a relay that changes nothing and keeps the times.
#include "bench/budgets.h"
#include "bench/heard.h"
#include "bench/percentile.h"
#include "bench/relay.h"
#include "bench/seen.h"
#include "tests/support/video_window.h"
#include "tests/support/x_server.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <poll.h>
#include <sys/inotify.h>
#include <thread>
#include <vector>

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr int AUDIO_PORT = 12567;
constexpr int VIDEO_PORT = 34999;
constexpr int ANNA = 2;
constexpr int BERNT = 3;
constexpr int RELAY = 20; // where Anna believes Bernt to be

constexpr int STARTS = 10; // each with devices that beat at other times
constexpr milliseconds SETTLING {1000};
constexpr milliseconds WATCHED {2600};
constexpr milliseconds LOOK {3}; // how often the screen is looked at

constexpr int FRAME = 800;      // samples
constexpr int BLOCK = 80;       // what the devices move at once
constexpr double BLOCK_MS = 10; // a block's first sample was spoken so long before it is there

double milliseconds_between(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double, std::milli>(to - from).count();
}

/// What one kind of thing took in all, and in each stage of its way.
struct Delays {
    std::vector<double> all;
    std::vector<double> stages[3];

    void print(const char* what, const std::array<const char*, 3>& names) const
    {
        printf("%zu %s:\n", all.size(), what);
        const auto line = [](const char* name, const std::vector<double>& values) {
            printf("    %-58s median %6.1f ms, 95th percentile %6.1f ms\n", name, qd_median(values),
                qd_percentile(values, 0.95));
        };
        for (size_t i = 0; i < names.size(); ++i)
            line(names[i], stages[i]);
        line("in all", all);
    }
};

/// Notes how far both sound files are, each time one of them moves.
class Ear {
public:
    Ear(pid_t speaker, const std::string& voice, const std::string& mix) :
        hearing_(speaker, voice, mix),
        moves_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK))
    {
        inotify_add_watch(moves_.get(), voice.c_str(), IN_ACCESS);
        inotify_add_watch(moves_.get(), mix.c_str(), IN_MODIFY);
    }

    /// Until then. Returns what has been noted from the beginning.
    const QD_Hearing& listen(Clock::time_point end)
    {
        while (Clock::now() < end) {
            pollfd moved {moves_.get(), POLLIN, 0};
            ::poll(&moved, 1, 20);
            char events[4096];
            while (::read(moves_.get(), events, sizeof events) > 0)
                ;
            hearing_.note();
        }
        return hearing_;
    }

private:
    QD_Hearing hearing_;
    const QD_Fd moves_;
};

/// Adds the first block of every packet that was heard.
void add_sounds(const QD_Hearing& hearing, const std::vector<QD_Passing>& log, Delays& delays)
{
    static const QD_Counted_Voice voice;
    std::map<int, Clock::time_point> sent; // by the place of the packet's first sample
    for (const QD_Passing& packet : log) {
        const auto* bytes = reinterpret_cast<const uint8_t*>(packet.front.data());
        sent[voice.place(static_cast<short>(qd_get_u16(bytes)))] = packet.when;
    }
    for (const QD_Hearing::Passage& passage : hearing.passages()) {
        const auto passed = sent.find(passage.place);
        if (passed == sent.end())
            continue;
        const auto said = hearing.when_said(passage.sample);
        const auto filled = hearing.when_said(passage.sample + FRAME - BLOCK);
        delays.stages[0].push_back(milliseconds_between(said, filled) + BLOCK_MS);
        delays.stages[1].push_back(milliseconds_between(filled, passed->second));
        delays.stages[2].push_back(milliseconds_between(passed->second, passage.heard));
        delays.all.push_back(milliseconds_between(said, passage.heard) + BLOCK_MS);
    }
}

/// When the picture in that packet was sent, by the packet.
Clock::time_point sent_at(const QD_Passing& packet)
{
    using namespace std::chrono;
    const auto* bytes = reinterpret_cast<const uint8_t*>(packet.front.data());
    const auto of_day = seconds(qd_get_u32(bytes + 4)) + microseconds(qd_get_u32(bytes + 8));
    return Clock::now()
        - duration_cast<Clock::duration>(system_clock::now().time_since_epoch() - of_day);
}

/// Adds every picture that was seen between the two times.
void add_pictures(const std::vector<QD_Seeing::Showing>& showings,
    const std::vector<QD_Passing>& log, Delays& delays)
{
    for (const QD_Seeing::Showing& showing : showings) {
        const auto after = std::upper_bound(log.begin(), log.end(), showing.when,
            [](Clock::time_point when, const QD_Passing& packet) { return when < packet.when; });
        if (after == log.begin())
            continue;
        const QD_Passing& packet = *std::prev(after);
        const double to_screen = milliseconds_between(packet.when, showing.when);
        const double to_relay = milliseconds_between(sent_at(packet), packet.when);
        delays.stages[0].push_back(showing.age_ms - to_relay - to_screen);
        delays.stages[1].push_back(to_relay);
        delays.stages[2].push_back(to_screen);
        delays.all.push_back(showing.age_ms);
    }
}

/// Two clients from their start to their end. Pictures at ten a second: what the options file has
/// is in force once it is applied.
class Conference {
public:
    Conference()
    {
        anna_.framework().announce(ANNA, ANNA, "anna");
        anna_.framework().announce(BERNT, RELAY, "bernt");
        bernt_.framework().announce(BERNT, BERNT, "bernt");
        bernt_.framework().announce(ANNA, ANNA, "anna");
    }

    /// Returns 0, -1 if sound or pictures do not come through.
    int run(Delays& sounds, Delays& pictures)
    {
        QD_Person person(anna_);
        QD_Person viewer(bernt_);
        QD_Seeing seeing(0);
        if (!sound_.bound() || !pictures_.bound() || !person.look_at("Quendal")
            || person.press("ctrl+o") != 0 || !person.look_at("Options")
            || person.press("Return") != 0 || !viewer.look_at("anna@")
            || !seeing.look_at(std::stoul(viewer.window())))
            return -1;
        std::this_thread::sleep_for(SETTLING);
        const auto end = Clock::now() + WATCHED;
        std::thread watching([&] {
            for (auto next = Clock::now(); next < end; next += LOOK) {
                std::this_thread::sleep_until(next);
                seeing.note();
            }
        });
        Ear ear(anna_.pid(), voice_, dir_ / "mix.wav");
        const QD_Hearing& hearing = ear.listen(end);
        watching.join();
        add_sounds(hearing, sound_.log(), sounds);
        auto showings = seeing.showings();
        if (!showings.empty()) // it was there already
            showings.erase(showings.begin());
        add_pictures(showings, pictures_.log(), pictures);
        return 0;
    }

private:
    QD_Client_Under_Test::Set_Up speaking() const
    {
        std::string options(280, '\0');
        options[3] = 3; // a local network: PCM, H.261
        options[267] = options[271] = 125;
        options[275] = 10; // pictures a second
        return {.mic = "file:" + voice_,
            .options_file = options,
            .toolkit_options = qd_seeing_options(0)};
    }
    QD_Client_Under_Test::Set_Up listening() const
    {
        return {.speaker = "file:" + dir_.path(), .toolkit_options = qd_seeing_options(1)};
    }
    static std::string make_voice(const std::string& path)
    {
        qd_write_wav(path, QD_Counted_Voice().samples());
        return path;
    }

    const QD_Temp_Dir dir_;
    const std::string voice_ = make_voice(dir_ / "voice.wav");
    QD_Relay sound_ {qd_test_host(RELAY), qd_test_host(BERNT), AUDIO_PORT, 1};
    QD_Relay pictures_ {qd_test_host(RELAY), qd_test_host(BERNT), VIDEO_PORT, 2};
    QD_Client_Under_Test bernt_ {BERNT, listening()};
    QD_Client_Under_Test anna_ {ANNA, speaking()};
};

}

int main()
{
    const QD_X_Server x_server {"1430x800x24"};
    Delays sounds;
    Delays pictures;
    for (int i = 0; i < STARTS; ++i) {
        if (Conference().run(sounds, pictures) != 0 || sounds.all.empty() || pictures.all.empty()) {
            fprintf(stderr, "no sound or no pictures\n");
            return 1;
        }
    }
    sounds.print("sounds", {"frame filled", "frame complete to network", "network to loudspeaker"});
    pictures.print("pictures", {"camera to coded", "coded to network", "network to window"});
    int missed = qd_report(QD_SOUND_DELAY, qd_median(sounds.all));
    missed |= qd_report(QD_SOUND_DELAY_LATE, qd_percentile(sounds.all, 0.95));
    missed |= qd_report(QD_PICTURE_DELAY, qd_median(pictures.all));
    return missed | qd_report(QD_PICTURE_DELAY_LATE, qd_percentile(pictures.all, 0.95));
}
