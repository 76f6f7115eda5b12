#include "bench/video_link.h"

#include "media/base/user_data.h"
#include "platform/vl/link_coder.h"
#include "video/pacing.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double SETTLED = 10;              // seconds
constexpr unsigned CLOCK_START_MS = 100000; // the statistics' first five seconds are special
constexpr double CODING_SECONDS = 0.0003;
constexpr int INTRA_EVERY = 10;

double psnr(const QD_Bench_Picture& a, const QD_Bench_Picture& b)
{
    int sum = 0;
    for (size_t i = 0; i < QD_LUMA_SIZE; ++i) {
        const int d = a[i] - b[i];
        sum += d * d;
    }
    return 10 * std::log10(255.0 * 255.0 * QD_LUMA_SIZE / std::max(sum, 1));
}

char* chars(QD_Bench_Picture& p) { return reinterpret_cast<char*>(p.data()); }
const char* chars(const QD_Bench_Picture& p) { return reinterpret_cast<const char*>(p.data()); }

struct Sent {
    double at;
    int size;
    bool intra;
};

/// The receiver's screen beside the film.
class Screen {
public:
    explicit Screen(const std::vector<QD_Bench_Picture>& film) : film_(film) {}

    // Compares what was shown before `until`.
    void show_until(double until)
    {
        for (; drawn_ < film_.size() && static_cast<double>(drawn_) / QD_SCENE_HZ < until; ++drawn_)
            if (drawn_ >= SETTLED * QD_SCENE_HZ)
                sum_ += psnr(picture, film_[drawn_]);
    }
    double get_mean() const { return sum_ / (static_cast<double>(drawn_) - SETTLED * QD_SCENE_HZ); }

    QD_Bench_Picture picture = QD_Bench_Picture(QD_PICTURE_SIZE);

private:
    const std::vector<QD_Bench_Picture>& film_;
    size_t drawn_ = 0;
    double sum_ = 0;
};

/// The real statistics and pacing.
class Pacer {
public:
    explicit Pacer(const QD_Bench_Link& link) : link_(link) {}

    // Seconds to wait after a picture of `size` bytes.
    double pause(double now, int size)
    {
        const auto ms = CLOCK_START_MS + static_cast<unsigned>(now * 1000);
        header_.seq = static_cast<uint16_t>((header_.seq + 1) % 256);
        if (figures_)
            figures_->frame(&header_, size, ms);
        else
            figures_.emplace(&header_, size, ms);
        return std::trunc(pacing_.adapt(
                   figures_->getKbps(ms), figures_->getFps(ms), link_.kbps, link_.fps))
            / 1000;
    }

private:
    const QD_Bench_Link& link_;
    QD_Pacing pacing_;
    rtp_fix_header header_;
    std::optional<UserData> figures_;
};

void fill_rates(const std::vector<Sent>& sent, double seconds, QD_Sent_Film& result)
{
    double bytes = 0;
    for (auto from = sent.begin(); from != sent.end(); ++from) {
        int second = 0;
        int intra = 0;
        for (auto s = from; s != sent.end() && s->at < from->at + 1; ++s) {
            second += s->size;
            intra = std::max(intra, s->intra ? s->size : 0);
        }
        result.burst_kbps = std::max(result.burst_kbps, (second - intra) / 125.0);
        result.largest = std::max(result.largest, from->size);
        if (from->at < SETTLED)
            continue;
        bytes += from->size;
        result.fps += 1 / (seconds - SETTLED);
    }
    result.kbps = bytes / 125 / (seconds - SETTLED);
}

}

QD_Sent_Film qd_send_film(const std::vector<QD_Bench_Picture>& film, const QD_Bench_Link& link,
    std::optional<double> constant)
{
    QD_Link_Coder coder(link.codec);
    coder.open(link.kbps, link.fps);
    QD_Picture_Encoder plain(link.codec);
    plain.open(link.fps, QD_CODED_SIZE);
    QD_Picture_Decoder decoder(link.codec);
    Screen screen(film);
    decoder.get_last(chars(screen.picture));
    Pacer pacer(link);

    const double seconds = static_cast<double>(film.size()) / QD_SCENE_HZ;
    std::vector<Sent> sent;
    double now = 0;
    double due = 0;
    double coarsest = 0;
    for (int n = 0; now < seconds; ++n) {
        const auto newest = static_cast<size_t>(now * QD_SCENE_HZ + 1e-6);
        due = now + 1.0 / link.fps;
        const bool intra = n % INTRA_EVERY == 0;
        const char* picture = chars(film[newest]);
        if (now >= SETTLED)
            coarsest = std::max(coarsest, coder.get_quantiser().get(false));
        char coded[QD_CODED_SIZE];
        const int size = constant ? plain.encode(picture, intra, *constant, coded)
                                  : coder.encode(picture, intra, now, coded);
        now += CODING_SECONDS;
        screen.show_until(now);
        decoder.decode(coded, size, chars(screen.picture));
        sent.push_back({now, size, intra});
        now = std::max(now + pacer.pause(now, size), due);
    }
    screen.show_until(seconds);
    QD_Sent_Film result;
    result.psnr = screen.get_mean();
    result.is_at_size_cap = coarsest <= QD_Quantiser::FINEST;
    fill_rates(sent, seconds, result);
    return result;
}
