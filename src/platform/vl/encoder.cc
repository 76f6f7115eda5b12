#include "platform/vl/codec.h"

extern "C" {
#include <libavutil/intreadwrite.h>
}

#include <algorithm>
#include <cstring>
#include <limits>

namespace {

constexpr int COARSEST = 31;
constexpr int WHOLE_BUFFER = 1 << 24; // bits, far more than any picture has
constexpr int NO_GOP = 1 << 20;       // intra pictures come when asked for, and only then

AVCodecID id_of(QD_Codec codec)
{
    return codec == QD_Codec::H263 ? AV_CODEC_ID_H263 : AV_CODEC_ID_H261;
}

// Averages each square of `side` pixels of one plane.
void soften_plane(char* plane, int width, int height, int side)
{
    auto* pixels = reinterpret_cast<uint8_t*>(plane);
    for (int y = 0; y < height; y += side) {
        for (int x = 0; x < width; x += side) {
            int sum = 0;
            for (int i = 0; i < side * side; ++i)
                sum += pixels[(y + i / side) * width + x + i % side];
            for (int i = 0; i < side * side; ++i)
                pixels[(y + i / side) * width + x + i % side]
                    = static_cast<uint8_t>(sum / (side * side));
        }
    }
}

// What the library tells of a picture: its quantiser (32 bits), its type and
// such (32 bits), its errors (64 bits for each plane).
const uint8_t* stats_of(const AVPacket* packet)
{
    size_t size = 0;
    const uint8_t* stats = av_packet_get_side_data(packet, AV_PKT_DATA_QUALITY_STATS, &size);
    return size < 16 ? nullptr : stats;
}

void soften(char* picture, int side)
{
    soften_plane(picture, QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT, side);
    soften_plane(picture + QD_U_OFFSET, QD_CHROMA_WIDTH, QD_CHROMA_HEIGHT, side);
    soften_plane(picture + QD_V_OFFSET, QD_CHROMA_WIDTH, QD_CHROMA_HEIGHT, side);
}

}

int QD_Picture_Encoder::open(int fps, int cap)
{
    qd_av_silence();
    intra_next_ = true;
    number_ = 0;
    const AVCodec* codec = avcodec_find_encoder(id_of(codec_));
    context_.reset(avcodec_alloc_context3(codec));
    frame_ = qd_av_make_frame();
    packet_.reset(av_packet_alloc());
    if (!context_ || !frame_ || !packet_)
        return -1;

    AVCodecContext* c = context_.get();
    c->width = QD_PICTURE_WIDTH;
    c->height = QD_PICTURE_HEIGHT;
    c->pix_fmt = AV_PIX_FMT_YUV420P;
    c->time_base = {1, fps};
    c->thread_count = 1;
    c->gop_size = NO_GOP;
    c->max_b_frames = 0;
    c->flags |= AV_CODEC_FLAG_QSCALE | AV_CODEC_FLAG_PSNR;
    c->qmin = 1;
    c->qmax = COARSEST;
    c->mb_lmax = c->qmax * FF_QP2LAMBDA;
    // A buffer of the cap's size that fills at once: the library codes a
    // picture again that does not fit, from the same reference.
    c->rc_buffer_size = cap * 8;
    c->rc_initial_buffer_occupancy = c->rc_buffer_size;
    c->rc_max_rate = int64_t {cap} * 800;
    c->bit_rate = 4000;
    room_ = cap * 8;
    AVDictionary* options = nullptr;
    av_dict_set_int(&options, "sc_threshold", std::numeric_limits<int>::max(), 0);
    av_dict_set_int(&options, "lmin", FF_QP2LAMBDA, 0);
    av_dict_set_int(&options, "lmax", COARSEST * FF_QP2LAMBDA, 0);
    const int opened = avcodec_open2(c, codec, &options);
    av_dict_free(&options);
    if (opened < 0)
        context_.reset();
    return opened < 0 ? -1 : 0;
}

// Leaves the coded picture in packet_. Returns its size or -1.
int QD_Picture_Encoder::code_once(const char* picture, bool intra, double quantiser)
{
    if (av_frame_make_writable(frame_.get()) < 0)
        return -1;
    qd_av_to_frame(picture, frame_.get());
    frame_->pts = number_++;
    frame_->pict_type = intra ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_P;
    frame_->quality = static_cast<int>(quantiser * FF_QP2LAMBDA + 0.5);
    av_packet_unref(packet_.get());
    if (avcodec_send_frame(context_.get(), frame_.get()) < 0
        || avcodec_receive_packet(context_.get(), packet_.get()) < 0)
        return -1;
    count_room(packet_->size);
    return packet_->size;
}

// The library keeps count of a buffer: what is in it is what the next picture
// may take. A picture's own size goes out; then comes in what is missing from
// the whole buffer, at least the lowest and at most the highest rate.
void QD_Picture_Encoder::set_next_room(int bytes, bool is_shared)
{
    AVCodecContext* c = context_.get();
    if (c == nullptr)
        return;
    const int bits = std::max(bytes, 0) * 8;
    // What takes more than its room, even at the coarsest, will do so again.
    const int taken = std::max(room_, packet_->size * 8);
    const int64_t more = is_shared ? bits - taken : WHOLE_BUFFER;
    c->rc_buffer_size = is_shared ? WHOLE_BUFFER : bits + 1;
    c->rc_max_rate = more == 0 ? 1 : more * c->time_base.den; // 0 stands for no buffer
    c->rc_min_rate = is_shared ? c->rc_max_rate : -c->rc_max_rate;
}

// What the library has counted after a picture of `size` bytes.
void QD_Picture_Encoder::count_room(int size)
{
    const AVCodecContext* c = context_.get();
    const int left = std::max(room_ - size * 8, 0);
    const int64_t missing = c->rc_buffer_size - left - 1;
    const int64_t fps = c->time_base.den;
    room_
        = left + static_cast<int>(std::clamp(missing, c->rc_min_rate / fps, c->rc_max_rate / fps));
}

double QD_Picture_Encoder::get_quantiser() const
{
    const uint8_t* stats = stats_of(packet_.get());
    return stats == nullptr ? COARSEST : AV_RL32(stats) / static_cast<double>(FF_QP2LAMBDA);
}

double QD_Picture_Encoder::get_error() const
{
    const uint8_t* stats = stats_of(packet_.get());
    return stats == nullptr ? 0 : static_cast<double>(AV_RL64(stats + 8)) / QD_LUMA_SIZE;
}

// Too much detail even at the coarsest: less of it, in squares, until it fits.
// Receivers never see the attempts, so each starts anew with an intra picture.
int QD_Picture_Encoder::code_softened(const char* picture)
{
    std::vector<char> softened(picture, picture + QD_PICTURE_SIZE);
    int size = -1;
    for (int side : {2, 4, 8}) {
        soften(softened.data(), side);
        size = code_once(softened.data(), true, COARSEST);
        if (0 <= size && size <= QD_CODED_SIZE)
            break;
    }
    return size;
}

int QD_Picture_Encoder::encode(const char* picture, bool intra, double quantiser, char* out)
{
    if (!context_)
        return -1;
    int size = code_once(picture, intra || intra_next_, quantiser);
    intra_next_ = size < 0;
    if (size > QD_CODED_SIZE) {
        size = code_softened(picture);
        intra_next_ = true;
    }
    if (size < 0 || size > QD_CODED_SIZE)
        return -1;
    memcpy(out, packet_->data, static_cast<size_t>(size));
    return size;
}
