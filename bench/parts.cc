// What small pieces of work cost, and what public libraries need for the same.
#include "audio/adpcm.h"
#include "audio/gsm_codec.h"
#include "bench/budgets.h"
#include "bench/percentile.h"
#include "platform/vl/av.h"
#include "tests/support/temp_dir.h"
#include "video/trace_file.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <random>
#include <span>

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t ROUNDS = 60;
constexpr int LINES = 20000;

template <class Work> double microseconds(Work work)
{
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

/// What took how long in each round, with us and with a public library.
struct Times {
    std::vector<double> ours;
    std::vector<double> theirs;
    double ratio() const { return qd_median(ours) / qd_median(theirs); }
};

// A sum of tones that swells, and noise.
std::vector<short> make_voice(size_t count)
{
    std::mt19937 random(1);
    std::vector<short> voice(count);
    for (size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / 8000;
        const double tones = std::sin(1400 * t) + std::sin(4100 * t) / 2 + std::sin(9000 * t) / 4;
        voice[i] = static_cast<short>(
            6000 * (1 + std::sin(20 * t)) * tones + static_cast<double>(random() % 1000));
    }
    return voice;
}

/// libavcodec's coder and decoder of the same codes, without a file format around them.
class Public_Adpcm {
public:
    Public_Adpcm()
    {
        const AVCodec* coder = avcodec_find_encoder_by_name("adpcm_ima_ssi");
        const AVCodec* decoder = avcodec_find_decoder_by_name("adpcm_ima_ssi");
        if (coder == nullptr || decoder == nullptr)
            return;
        coder_.reset(avcodec_alloc_context3(coder));
        decoder_.reset(avcodec_alloc_context3(decoder));
        for (AVCodecContext* context : {coder_.get(), decoder_.get()}) {
            context->sample_rate = 8000;
            context->sample_fmt = AV_SAMPLE_FMT_S16;
            av_channel_layout_default(&context->ch_layout, 1);
        }
        // As long as can be, so that what surrounds the coding of a frame does not count.
        av_opt_set_int(coder_->priv_data, "block_size", 8192, 0);
        good_ = avcodec_open2(coder_.get(), coder, nullptr) == 0
            && avcodec_open2(decoder_.get(), decoder, nullptr) == 0;
        if (!good_)
            return;
        frame_->nb_samples = coder_->frame_size;
        frame_->format = AV_SAMPLE_FMT_S16;
        av_channel_layout_default(&frame_->ch_layout, 1);
        good_ = av_frame_get_buffer(frame_.get(), 0) == 0;
    }

    bool good() const { return good_; }
    size_t frame_size() const { return static_cast<size_t>(coder_->frame_size); }

    void encode(std::span<const short> in)
    {
        av_frame_make_writable(frame_.get());
        memcpy(frame_->data[0], in.data(), in.size_bytes());
        frame_->pts += frame_->nb_samples;
        av_packet_unref(packet_.get());
        avcodec_send_frame(coder_.get(), frame_.get());
        avcodec_receive_packet(coder_.get(), packet_.get());
    }
    void decode()
    {
        avcodec_send_packet(decoder_.get(), packet_.get());
        avcodec_receive_frame(decoder_.get(), decoded_.get());
    }
    const AVPacket& packet() const { return *packet_; }
    const AVFrame& decoded() const { return *decoded_; }

private:
    QD_Av_Codec coder_;
    QD_Av_Codec decoder_;
    QD_Av_Packet packet_ {av_packet_alloc()};
    QD_Av_Frame frame_ {av_frame_alloc()};
    QD_Av_Frame decoded_ {av_frame_alloc()};
    bool good_ = false;
};

int measure_adpcm()
{
    Public_Adpcm library;
    if (!library.good()) {
        fprintf(stderr, "no adpcm_ima_ssi in libavcodec\n");
        return 1;
    }
    const size_t count = library.frame_size();
    const int samples = static_cast<int>(count);
    const std::vector<short> voice = make_voice(ROUNDS * count); // no processor learns it by heart
    std::vector<uint8_t> codes(count / 2);
    std::vector<short> decoded(count);
    adpcm_state coder;
    adpcm_state decoder;
    Times coding;
    Times decoding;
    for (size_t round = 0; round < ROUNDS; ++round) {
        const std::span in(&voice[round * count], count);
        coding.ours.push_back(
            microseconds([&] { adpcm_coder(in.data(), codes.data(), samples, &coder); }));
        coding.theirs.push_back(microseconds([&] { library.encode(in); }));
        decoding.ours.push_back(
            microseconds([&] { adpcm_decoder(codes.data(), decoded.data(), samples, &decoder); }));
        decoding.theirs.push_back(microseconds([&] { library.decode(); }));
        if (library.packet().size != samples / 2 || library.decoded().nb_samples != samples
            || !std::equal(codes.begin(), codes.end(), library.packet().data)
            || memcmp(decoded.data(), library.decoded().data[0], count * sizeof(short)) != 0) {
            fprintf(stderr, "the two ADPCM coders do not do the same\n");
            return 1;
        }
    }
    printf("ADPCM, %d samples: coded %.1f us, libavcodec %.1f us; decoded %.1f us, libavcodec"
           " %.1f us\n",
        samples, qd_median(coding.ours), qd_median(coding.theirs), qd_median(decoding.ours),
        qd_median(decoding.theirs));
    char beside[100];
    snprintf(beside, sizeof beside, "of libavcodec's; coding %.2f, decoding %.2f", coding.ratio(),
        decoding.ratio());
    return qd_report(QD_ADPCM, std::max(coding.ratio(), decoding.ratio()), beside);
}

// For information: a packet of sound in our wrapper, and by the library alone.
void measure_gsm()
{
    constexpr size_t SAMPLES = QD_Gsm_Codec::SAMPLES;
    constexpr size_t BYTES = QD_Gsm_Codec::PACKET_SIZE;
    const std::vector<short> voice = make_voice(ROUNDS * SAMPLES);
    QD_Gsm_Codec ours;
    std::array<uint8_t, BYTES> packet;
    std::array<short, SAMPLES> heard;
    const std::unique_ptr<gsm_state, void (*)(gsm)> library(gsm_create(), gsm_destroy);
    Times coding;
    Times decoding;
    for (size_t round = 0; round < ROUNDS; ++round) {
        const std::span<const short, SAMPLES> in(&voice[round * SAMPLES], SAMPLES);
        coding.ours.push_back(microseconds([&] { ours.encode(in, packet); }));
        decoding.ours.push_back(microseconds([&] { ours.decode(packet, heard); }));
        coding.theirs.push_back(microseconds([&] {
            for (size_t i = 0; i < 5; ++i)
                gsm_encode(library.get(), const_cast<short*>(&in[i * 160]), &packet[i * 33]);
        }));
        decoding.theirs.push_back(microseconds([&] {
            for (size_t i = 0; i < 5; ++i)
                gsm_decode(library.get(), &packet[i * 33], &heard[i * 160]);
        }));
    }
    printf("GSM, %zu samples: coded %.1f us, libgsm %.1f us; decoded %.1f us, libgsm %.1f us\n",
        SAMPLES, qd_median(coding.ours), qd_median(coding.theirs), qd_median(decoding.ours),
        qd_median(decoding.theirs));
}

int measure_trace()
{
    const QD_Temp_Dir dir;
    QD_Trace_File trace((dir / "video.log").c_str());
    std::vector<double> spent;
    for (int i = 0; i < LINES; ++i)
        spent.push_back(microseconds([&] { trace.lines({i % 12}); }));
    return qd_report(QD_TRACE_LINE, qd_median(spent));
}

}

int main()
{
    measure_gsm();
    const int adpcm = measure_adpcm();
    return measure_trace() | adpcm;
}
