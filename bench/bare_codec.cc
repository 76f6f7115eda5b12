#include "bench/bare_codec.h"

QD_Bare_Codec::QD_Bare_Codec(QD_Codec codec, int fps) :
    frame_(qd_av_make_frame()),
    decoded_(av_frame_alloc()),
    packet_(av_packet_alloc())
{
    qd_av_silence();
    const AVCodecID id = codec == QD_Codec::H263 ? AV_CODEC_ID_H263 : AV_CODEC_ID_H261;
    coder_.reset(avcodec_alloc_context3(avcodec_find_encoder(id)));
    coder_->width = QD_PICTURE_WIDTH;
    coder_->height = QD_PICTURE_HEIGHT;
    coder_->pix_fmt = AV_PIX_FMT_YUV420P;
    coder_->time_base = {1, fps};
    coder_->thread_count = 1;
    coder_->gop_size = 1 << 20;
    coder_->max_b_frames = 0;
    coder_->flags |= AV_CODEC_FLAG_QSCALE;
    avcodec_open2(coder_.get(), coder_->codec, nullptr);
    decoder_.reset(avcodec_alloc_context3(avcodec_find_decoder(id)));
    decoder_->thread_count = 1;
    decoder_->flags |= AV_CODEC_FLAG_LOW_DELAY;
    avcodec_open2(decoder_.get(), decoder_->codec, nullptr);
}

void QD_Bare_Codec::encode(const char* picture, bool intra, double quantiser)
{
    av_frame_make_writable(frame_.get());
    qd_av_to_frame(picture, frame_.get());
    frame_->pts = number_++;
    frame_->pict_type = intra ? AV_PICTURE_TYPE_I : AV_PICTURE_TYPE_P;
    frame_->quality = static_cast<int>(quantiser * FF_QP2LAMBDA + 0.5);
    av_packet_unref(packet_.get());
    avcodec_send_frame(coder_.get(), frame_.get());
    avcodec_receive_packet(coder_.get(), packet_.get());
}

void QD_Bare_Codec::decode()
{
    avcodec_send_packet(decoder_.get(), packet_.get());
    avcodec_receive_frame(decoder_.get(), decoded_.get());
}
