// Picture quality at the receiver under the real pacing, by simulated time:
// the quantiser that follows the link against every constant one, over real
// clips and photographs that move. Says what is required and whether it is met.
#include "bench/bare_codec.h"
#include "bench/budgets.h"
#include "bench/percentile.h"
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

/// What each picture took, in milliseconds: with us, and with libavcodec alone, asked for the same
/// quantiser, but coding each picture once, whatever its size.
struct Times {
    std::vector<double> encode, decode, bare_encode, bare_decode;
};

void time_scene(const QD_Scene& scene, const QD_Bench_Link& link, Times& times)
{
    constexpr size_t PICTURES = 300;
    const auto film = scene.film(CLIPS, SECONDS / 4);
    QD_Link_Coder coder(link.codec);
    coder.open(link.kbps, link.fps);
    QD_Picture_Decoder decoder(link.codec);
    QD_Bare_Codec bare(link.codec, link.fps);
    char coded[QD_CODED_SIZE];
    std::string out(QD_PICTURE_SIZE, '\0');
    for (size_t i = 0; i < PICTURES; ++i) {
        const auto& picture = film[i * QD_SCENE_HZ / static_cast<size_t>(link.fps) % film.size()];
        const auto* bytes = reinterpret_cast<const char*>(picture.data());
        const bool intra = i % 10 == 0;
        const double quantiser = coder.get_quantiser().get(intra);
        const double start = cpu_ms();
        const int size = coder.encode(bytes, intra, static_cast<double>(i) / link.fps, coded);
        const double encoded = cpu_ms();
        decoder.decode(coded, size, out.data());
        const double decoded = cpu_ms();
        bare.encode(bytes, intra, quantiser);
        const double bare_encoded = cpu_ms();
        bare.decode();
        times.bare_decode.push_back(cpu_ms() - bare_encoded);
        times.bare_encode.push_back(bare_encoded - decoded);
        times.decode.push_back(decoded - encoded);
        times.encode.push_back(encoded - start);
    }
}

// The medians over all scenes are what is required, of the link that is the slowest.
int time_codecs()
{
    double encode = 0;
    double decode = 0;
    std::string bare_encode;
    std::string bare_decode;
    const auto note_slowest
        = [](const auto& ours, const auto& bare, double& slowest, auto& beside) {
              if (qd_median(ours) <= slowest)
                  return;
              slowest = qd_median(ours);
              char text[50];
              snprintf(text, sizeof text, "libavcodec alone %.3f ms", qd_median(bare));
              beside = text;
          };
    for (const Required& required : LINKS) {
        Times times;
        for (const QD_Scene& scene : qd_scenes())
            time_scene(scene, required.link, times);
        printf("%s  encode %.3f ms, libavcodec alone %.3f ms; decode %.3f ms, alone %.3f ms\n",
            required.link.name, qd_median(times.encode), qd_median(times.bare_encode),
            qd_median(times.decode), qd_median(times.bare_decode));
        note_slowest(times.encode, times.bare_encode, encode, bare_encode);
        note_slowest(times.decode, times.bare_decode, decode, bare_decode);
    }
    return qd_report(QD_ENCODE, encode, bare_encode) | qd_report(QD_DECODE, decode, bare_decode);
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
    ok = time_codecs() == 0 && ok;
    printf("%s\n", ok ? "as required" : "NOT as required");
    return ok ? 0 : 1;
}
