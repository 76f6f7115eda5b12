// Picture quality at the receiver under the real pacing, by simulated time:
// the quantiser that follows the link against every constant one, over real
// clips and photographs that move. Says what is required and whether it is met.
#include "bench/scenes.h"
#include "bench/video_link.h"
#include "platform/vl/link_coder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <string>
#include <thread>

namespace {

constexpr char CLIPS[] = QD_BUILD_DIR "/bench-clips";
constexpr int SECONDS = 40;
constexpr size_t THREADS = 2;

struct Required {
    QD_Bench_Link link;
    double gain; // decibels over the best constant quantiser
};
constexpr std::array<Required, 4> LINKS {{
    {{"H.263   20/10", QD_Codec::H263, 20, 10}, 1},
    {{"H.261   60/5 ", QD_Codec::H261, 60, 5}, 1},
    {{"H.261  120/10", QD_Codec::H261, 120, 10}, 1},
    {{"H.261 1500/10", QD_Codec::H261, 1500, 10}, 0},
}};
constexpr size_t CONSTANTS = 31; // quantisers 1 to 31

struct Outcome {
    QD_Sent_Film ours;
    std::array<double, CONSTANTS> constants {}; // decibels
};
using Outcomes = std::vector<std::array<Outcome, LINKS.size()>>; // by scene

// Whether the rate is in the band, or a cap is what keeps it below.
bool is_in_band(const QD_Sent_Film& film, const QD_Bench_Link& link)
{
    const bool is_capped = film.fps > 0.95 * link.fps || film.is_at_size_cap;
    return film.kbps <= link.kbps && (film.kbps >= 0.8 * link.kbps || is_capped);
}

Outcomes send_all()
{
    const auto scenes = qd_scenes();
    Outcomes outcomes(scenes.size());
    const auto work = [&](size_t first) {
        for (size_t s = first; s < scenes.size(); s += THREADS) {
            const auto film = scenes[s].film(CLIPS, SECONDS);
            for (size_t l = 0; !film.empty() && l < LINKS.size(); ++l) {
                Outcome& outcome = outcomes[s][l];
                outcome.ours = qd_send_film(film, LINKS[l].link, std::nullopt);
                for (size_t q = 0; q < CONSTANTS; ++q)
                    outcome.constants[q]
                        = qd_send_film(film, LINKS[l].link, static_cast<double>(q + 1)).psnr;
            }
        }
    };
    std::vector<std::thread> threads;
    for (size_t i = 0; i < THREADS; ++i)
        threads.emplace_back(work, i);
    for (std::thread& thread : threads)
        thread.join();
    return outcomes;
}

// Decibels over the best constant quantiser, the same for all the scenes that `which` takes.
template <class Which>
double print_gain(const Outcomes& outcomes, size_t l, const char* title, Which which)
{
    double ours = 0;
    std::array<double, CONSTANTS> sums {};
    int count = 0;
    for (size_t s = 0; s < outcomes.size(); ++s) {
        if (!which(qd_scenes()[s]))
            continue;
        const Outcome& outcome = outcomes[s][l];
        ours += outcome.ours.psnr;
        for (size_t q = 0; q < sums.size(); ++q)
            sums[q] += outcome.constants[q];
        ++count;
    }
    const auto best = std::max_element(sums.begin(), sums.end());
    const double gain = (ours - *best) / count;
    printf("%s  %-12s %5.2f dB, best constant (%2d) %5.2f dB: %+.3f dB\n", LINKS[l].link.name,
        title, ours / count, static_cast<int>(best - sums.begin()) + 1, *best / count, gain);
    return gain;
}

bool print_link(const Outcomes& outcomes, size_t l)
{
    bool ok = true;
    const QD_Bench_Link& link = LINKS[l].link;
    for (size_t s = 0; s < outcomes.size(); ++s) {
        const Outcome& outcome = outcomes[s][l];
        const QD_Sent_Film& ours = outcome.ours;
        const auto best = std::max_element(outcome.constants.begin(), outcome.constants.end());
        const bool band = is_in_band(ours, link);
        const bool steady = ours.burst_kbps <= 2 * link.kbps;
        ok = ok && band && steady;
        printf("%s  %-12s %5.2f dB %5.2f fps %6.1f kbit/s, fullest second %6.1f, largest %4d; "
               "its best constant (%2d) %5.2f dB%s%s\n",
            link.name, qd_scenes()[s].name, ours.psnr, ours.fps, ours.kbps, ours.burst_kbps,
            ours.largest, static_cast<int>(best - outcome.constants.begin()) + 1, *best,
            band ? "" : "  OUT OF BAND", steady ? "" : "  BURST");
    }
    print_gain(outcomes, l, "tuned on", [](const QD_Scene& scene) { return !scene.is_held_back; });
    print_gain(outcomes, l, "held back", [](const QD_Scene& scene) { return scene.is_held_back; });
    const double gain = print_gain(outcomes, l, "all", [](const QD_Scene&) { return true; });
    printf("\n");
    return ok && gain >= LINKS[l].gain;
}

// The processor's time, since others may want it too.
double cpu_ms()
{
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<long>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// The medians over all scenes are what is required; each scene's are shown beside them.
bool time_codecs(const QD_Bench_Link& link)
{
    constexpr size_t PICTURES = 300;
    std::vector<double> encode;
    std::vector<double> decode;
    for (const QD_Scene& scene : qd_scenes()) {
        const auto film = scene.film(CLIPS, SECONDS / 4);
        QD_Link_Coder coder(link.codec);
        coder.open(link.kbps, link.fps);
        QD_Picture_Decoder decoder(link.codec);
        char coded[QD_CODED_SIZE];
        std::string out(QD_PICTURE_SIZE, '\0');
        for (size_t i = 0; i < PICTURES; ++i) {
            const auto& picture
                = film[i * QD_SCENE_HZ / static_cast<size_t>(link.fps) % film.size()];
            const auto* bytes = reinterpret_cast<const char*>(picture.data());
            const double now = static_cast<double>(i) / link.fps;
            const double start = cpu_ms();
            const int size = coder.encode(bytes, i % 10 == 0, now, coded);
            const double middle = cpu_ms();
            decoder.decode(coded, size, out.data());
            decode.push_back(cpu_ms() - middle);
            encode.push_back(middle - start);
        }
        printf("%s  %-12s encode %.3f ms, decode %.3f ms\n", link.name, scene.name,
            median({encode.end() - PICTURES, encode.end()}),
            median({decode.end() - PICTURES, decode.end()}));
    }
    const bool fast = median(encode) <= 0.3 && median(decode) <= 0.15;
    printf("%s  %-12s encode %.3f ms, decode %.3f ms%s\n", link.name, "all", median(encode),
        median(decode), fast ? "" : "  SLOW");
    return fast;
}

}

int main()
{
    for (const QD_Scene& scene : qd_scenes()) {
        if (scene.film(CLIPS, 1).empty()) {
            fprintf(stderr, "no clip for \"%s\" in %s: run tools/bench-clips.sh %s\n", scene.name,
                CLIPS, CLIPS);
            return 1;
        }
    }
    bool ok = true;
    const Outcomes outcomes = send_all();
    for (size_t l = 0; l < LINKS.size(); ++l)
        ok = print_link(outcomes, l) && ok;
    for (const Required& required : LINKS)
        ok = time_codecs(required.link) && ok;
    printf("%s\n", ok ? "as required" : "NOT as required");
    return ok ? 0 : 1;
}
