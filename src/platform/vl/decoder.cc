#include "platform/vl/codec.h"

#include <cstring>

namespace {

// Where the fields of a picture header lie, in bits.
constexpr uint32_t H263_START = 0x20; // 22 bits
constexpr int H263_FORMAT_AT = 35;    // 3 bits behind start code, time and five flags
constexpr uint32_t H263_QCIF = 2;
constexpr int H263_INTER_AT = 38;
constexpr uint32_t H261_START = 0x10; // 20 bits
constexpr int H261_CIF_AT = 28;
constexpr int HEADER_BYTES = 7;

// Up to 24 bits from anywhere.
uint32_t bits_at(const uint8_t* bytes, int at, int count)
{
    uint32_t value = 0;
    for (int i = at; i < at + count; ++i)
        value = value << 1 | (bytes[i / 8] >> (7 - i % 8) & 1);
    return value;
}

bool is_h263_intra(const uint8_t* bits) { return bits_at(bits, H263_INTER_AT, 1) == 0; }

}

void qd_make_black(char* out)
{
    memset(out, 16, QD_LUMA_SIZE);
    memset(out + QD_U_OFFSET, 128, 2 * QD_CHROMA_SIZE);
}

QD_Picture_Decoder::QD_Picture_Decoder(QD_Codec codec) :
    codec_(codec),
    frame_(av_frame_alloc()),
    last_(av_frame_alloc()),
    packet_(av_packet_alloc())
{
    qd_av_silence();
    const AVCodec* library_codec
        = avcodec_find_decoder(codec == QD_Codec::H263 ? AV_CODEC_ID_H263 : AV_CODEC_ID_H261);
    context_.reset(avcodec_alloc_context3(library_codec));
    if (!context_)
        return;
    context_->thread_count = 1;
    context_->flags |= AV_CODEC_FLAG_LOW_DELAY;
    if (avcodec_open2(context_.get(), library_codec, nullptr) < 0)
        context_.reset();
}

// A header of another size would set the decoder up anew, and one that claims
// to be intra would count as a place to start from.
bool QD_Picture_Decoder::is_acceptable(const uint8_t* bits, int len) const
{
    if (len < HEADER_BYTES)
        return false;
    if (codec_ == QD_Codec::H261)
        return bits_at(bits, 0, 20) == H261_START && bits_at(bits, H261_CIF_AT, 1) == 0;
    return bits_at(bits, 0, 22) == H263_START && bits_at(bits, H263_FORMAT_AT, 3) == H263_QCIF
        && (seen_intra_ || is_h263_intra(bits));
}

int QD_Picture_Decoder::decode(const char* bits, int len, char* out)
{
    const auto* bytes = reinterpret_cast<const uint8_t*>(bits);
    if (!context_ || !is_acceptable(bytes, len))
        return -1;
    padded_.assign(bytes, bytes + len);
    padded_.resize(static_cast<size_t>(len) + AV_INPUT_BUFFER_PADDING_SIZE);
    packet_->data = padded_.data();
    packet_->size = len;
    if (avcodec_send_packet(context_.get(), packet_.get()) < 0)
        return -1;

    bool got = false;
    while (avcodec_receive_frame(context_.get(), frame_.get()) == 0) {
        got = frame_->width == QD_PICTURE_WIDTH && frame_->height == QD_PICTURE_HEIGHT
            && frame_->format == AV_PIX_FMT_YUV420P;
        if (got) {
            av_frame_unref(last_.get());
            av_frame_move_ref(last_.get(), frame_.get());
        }
    }
    if (!got)
        return -1;
    seen_intra_ = true;
    qd_av_from_frame(last_.get(), out);
    return 0;
}

void QD_Picture_Decoder::get_last(char* out) const
{
    if (last_->width != 0)
        qd_av_from_frame(last_.get(), out);
    else
        qd_make_black(out);
}
