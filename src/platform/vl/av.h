// libav objects with one owner each, and the two shapes a picture has.
#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include <memory>

struct QD_Av_Delete {
    void operator()(AVCodecContext* p) const { avcodec_free_context(&p); }
    void operator()(AVFormatContext* p) const { avformat_close_input(&p); }
    void operator()(AVFrame* p) const { av_frame_free(&p); }
    void operator()(AVPacket* p) const { av_packet_free(&p); }
    void operator()(SwsContext* p) const { sws_freeContext(p); }
};

using QD_Av_Codec = std::unique_ptr<AVCodecContext, QD_Av_Delete>;
using QD_Av_Format = std::unique_ptr<AVFormatContext, QD_Av_Delete>;
using QD_Av_Frame = std::unique_ptr<AVFrame, QD_Av_Delete>;
using QD_Av_Packet = std::unique_ptr<AVPacket, QD_Av_Delete>;
using QD_Av_Scaler = std::unique_ptr<SwsContext, QD_Av_Delete>;

/// Keeps the library from printing. Any thread, as often as one likes.
void qd_av_silence();

/// A QCIF frame of the library's own with room for a picture; null if it cannot be had.
QD_Av_Frame qd_av_make_frame();

/// Copies between our picture (QD_PICTURE_SIZE bytes) and a QCIF 4:2:0 frame.
void qd_av_to_frame(const char* picture, AVFrame* frame);
void qd_av_from_frame(const AVFrame* frame, char* picture);
