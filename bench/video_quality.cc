// Picture quality at the receiver under the real pacing, by simulated time.
//
// One sender, one receiver, no loss: capture on schedule, code, count, pause.
// What the receiver's screen shows is compared with the scene 30 times a
// second, once with the quantiser that follows the link and once with every
// constant one.
#include "bench/scenes.h"
#include "media/user_data.h"
#include "platform/vl/codec.h"
#include "platform/vl/quantiser.h"
#include "video/pacing.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <optional>
#include <string>

namespace {

constexpr double SECONDS = 40;
constexpr double SETTLED = 10; // figures are taken from here on
constexpr double SCREEN_HZ = 30;
constexpr unsigned CLOCK_START_MS = 100000; // the statistics' first five seconds are special
constexpr double CODING_SECONDS = 0.0003;

struct Link {
    const char* name;
    QD_Codec codec;
    double kbps;
    int fps;
    double better_by; // decibels over the best constant quantiser
} constexpr LINKS[] = {
    {"H.263   20/10", QD_Codec::H263, 20, 10, 1},
    {"H.261   60/5 ", QD_Codec::H261, 60, 5, 1},
    {"H.261  120/10", QD_Codec::H261, 120, 10, 1},
    {"H.261 1500/10", QD_Codec::H261, 1500, 10, 0},
};

struct Result {
    double psnr = 0;       // mean over the screen's pictures
    double fps = 0;        // as sent, settled
    double kbps = 0;       // likewise
    double worst_kbps = 0; // the fullest second, without its largest picture
    double mean_size = 0;
    double largest = 0;
};

// The same pictures for every run.
const QD_Bench_Picture& picture_of(const QD_Scene& scene, double seconds)
{
    static std::map<std::pair<const char*, long>, QD_Bench_Picture> known;
    const long tick = std::lround(seconds * 600);
    auto& picture = known[{scene.name, tick}];
    if (picture.empty())
        picture = scene.at(static_cast<double>(tick) / 600);
    return picture;
}

double psnr(const QD_Bench_Picture& a, const QD_Bench_Picture& b)
{
    double sum = 0;
    for (size_t i = 0; i < QD_LUMA_SIZE; ++i) {
        const int d = a[i] - b[i];
        sum += d * d;
    }
    return 10 * std::log10(255.0 * 255.0 * QD_LUMA_SIZE / std::max(sum, 1.0));
}

char* chars(QD_Bench_Picture& p) { return reinterpret_cast<char*>(p.data()); }
const char* chars(const QD_Bench_Picture& p) { return reinterpret_cast<const char*>(p.data()); }

struct Sent {
    double at;
    int size;
};

void fill_rates(const std::vector<Sent>& sent, Result& result)
{
    double bytes = 0;
    int count = 0;
    for (size_t i = 0; i < sent.size(); ++i) {
        double second = 0;
        int largest = 0;
        for (size_t j = i; j < sent.size() && sent[j].at < sent[i].at + 1; ++j) {
            second += sent[j].size;
            largest = std::max(largest, sent[j].size);
        }
        result.worst_kbps = std::max(result.worst_kbps, (second - largest) / 125);
        result.largest = std::max<double>(result.largest, sent[i].size);
        if (sent[i].at < SETTLED)
            continue;
        bytes += sent[i].size;
        ++count;
    }
    result.fps = count / (SECONDS - SETTLED);
    result.kbps = bytes / 125 / (SECONDS - SETTLED);
    result.mean_size = bytes / std::max(count, 1);
}

Result run(const QD_Scene& scene, const Link& link, std::optional<double> constant)
{
    QD_Quantiser quantiser(link.kbps, link.fps);
    QD_Picture_Encoder encoder(link.codec);
    QD_Picture_Decoder decoder(link.codec);
    encoder.open(link.fps, constant ? QD_CODED_SIZE : quantiser.get_cap());
    QD_Pacing pacing;
    rtp_fix_header header;
    std::optional<UserData> figures;
    QD_Bench_Picture screen(QD_PICTURE_SIZE);
    decoder.get_last(chars(screen));

    Result result;
    std::vector<Sent> sent;
    double now = 0;
    double due = 0;
    double drawn = 0;
    double psnr_sum = 0;
    int psnr_count = 0;
    const auto draw_until = [&](double until) {
        for (; drawn < until; drawn += 1 / SCREEN_HZ) {
            if (drawn < SETTLED)
                continue;
            psnr_sum += psnr(screen, picture_of(scene, drawn));
            ++psnr_count;
        }
    };
    for (int n = 0; now < SECONDS; ++n) {
        now = std::max(now, due);
        due = now + 1.0 / link.fps;
        char coded[QD_CODED_SIZE];
        const int size = encoder.encode(
            chars(picture_of(scene, now)), n % 10 == 0, constant.value_or(quantiser.get()), coded);
        quantiser.coded(size);
        now += CODING_SECONDS;
        draw_until(std::min(now, SECONDS));
        decoder.decode(coded, size, chars(screen));
        sent.push_back({now, size});

        const auto ms = CLOCK_START_MS + static_cast<unsigned>(now * 1000);
        header.seq = static_cast<uint16_t>((n + 1) % 256);
        if (figures)
            figures->frame(&header, size, ms);
        else
            figures.emplace(&header, size, ms);
        now += std::trunc(
                   pacing.adapt(figures->getKbps(ms), figures->getFps(ms), link.kbps, link.fps))
            / 1000;
    }
    draw_until(SECONDS);
    result.psnr = psnr_sum / psnr_count;
    fill_rates(sent, result);
    return result;
}

// Whether the rate is in the band, or a cap (frame rate, picture size) is what holds it.
bool in_band(const Result& r, const Link& link)
{
    const bool capped = r.fps > 0.95 * link.fps;
    return r.kbps < 1.05 * link.kbps && (r.kbps > 0.8 * link.kbps * 0.95 || capped);
}

bool measure(const Link& link)
{
    bool ok = true;
    double ours = 0;
    std::map<double, double> constants;
    double best_each = 0;
    for (const QD_Scene& scene : qd_scenes()) {
        const Result r = run(scene, link, std::nullopt);
        double best = 0;
        for (double q : {2., 3., 4., 5., 6., 8., 10., 12., 14., 17., 20., 24., 28., 31.}) {
            const Result constant = run(scene, link, q);
            constants[q] += constant.psnr;
            best = std::max(best, constant.psnr);
        }
        const bool band = in_band(r, link);
        const bool bursts = r.worst_kbps <= 2 * link.kbps;
        ok = ok && band && bursts;
        printf("%s  %-12s %5.2f dB %5.2f fps %7.1f kbit/s  best own constant %5.2f dB  "
               "second %6.1f largest %5.0f%s%s\n",
            link.name, scene.name, r.psnr, r.fps, r.kbps, best, r.worst_kbps, r.largest,
            band ? "" : "  OUT OF BAND", bursts ? "" : "  BURST");
        ours += r.psnr;
        best_each += best;
    }
    const auto scenes = static_cast<double>(qd_scenes().size());
    const auto best = std::max_element(constants.begin(), constants.end(),
        [](const auto& a, const auto& b) { return a.second < b.second; });
    const double gain = (ours - best->second) / scenes;
    printf(
        "%s  mean %5.2f dB, best constant (%2.0f) %5.2f dB, gain %+.2f dB; each scene's own best "
        "%5.2f dB\n\n",
        link.name, ours / scenes, best->first, best->second / scenes, gain, best_each / scenes);
    return ok && gain >= link.better_by;
}

template <class Work> double median_ms(int times, Work work)
{
    std::vector<double> took;
    for (int i = 0; i < times; ++i) {
        const auto start = std::chrono::steady_clock::now();
        work(i);
        took.push_back(
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count());
    }
    std::nth_element(took.begin(), took.begin() + times / 2, took.end());
    return took[static_cast<size_t>(times / 2)];
}

bool time_codecs()
{
    bool ok = true;
    for (const Link& link : LINKS) {
        for (const QD_Scene& scene : qd_scenes()) {
            QD_Quantiser quantiser(link.kbps, link.fps);
            QD_Picture_Encoder encoder(link.codec);
            encoder.open(link.fps, quantiser.get_cap());
            QD_Picture_Decoder decoder(link.codec);
            std::vector<std::string> pictures;
            char coded[QD_CODED_SIZE];
            QD_Bench_Picture out(QD_PICTURE_SIZE);
            for (int i = 0; i < 300; ++i)
                picture_of(scene, i / static_cast<double>(link.fps));
            const double encode = median_ms(300, [&](int i) {
                const auto& picture = picture_of(scene, i / static_cast<double>(link.fps));
                const int size
                    = encoder.encode(chars(picture), i % 10 == 0, quantiser.get(), coded);
                quantiser.coded(size);
                pictures.emplace_back(coded, static_cast<size_t>(size));
            });
            const double decode = median_ms(300, [&](int i) {
                const std::string& bits = pictures[static_cast<size_t>(i)];
                decoder.decode(bits.data(), static_cast<int>(bits.size()), chars(out));
            });
            const bool fast = encode <= 0.3 && decode <= 0.15;
            ok = ok && fast;
            printf("%s  %-12s encode %.3f ms, decode %.3f ms%s\n", link.name, scene.name, encode,
                decode, fast ? "" : "  SLOW");
        }
    }
    return ok;
}

}

int main()
{
    bool ok = true;
    for (const Link& link : LINKS)
        ok = measure(link) && ok;
    ok = time_codecs() && ok;
    printf("%s\n", ok ? "as required" : "NOT as required");
    return ok ? 0 : 1;
}
