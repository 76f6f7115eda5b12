#include "platform/vl/av.h"

#include "platform/vl/picture.h"

extern "C" {
#include <libavutil/imgutils.h>
}

namespace {

void print_nothing(void*, int, const char*, va_list) {}

}

void qd_av_silence() { av_log_set_callback(print_nothing); }

QD_Av_Frame qd_av_make_frame()
{
    QD_Av_Frame frame(av_frame_alloc());
    frame->format = AV_PIX_FMT_YUV420P;
    frame->width = QD_PICTURE_WIDTH;
    frame->height = QD_PICTURE_HEIGHT;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        frame.reset();
    return frame;
}

void qd_av_to_frame(const char* picture, AVFrame* frame)
{
    uint8_t* planes[4];
    int strides[4];
    av_image_fill_arrays(planes, strides, reinterpret_cast<const uint8_t*>(picture),
        AV_PIX_FMT_YUV420P, QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT, 1);
    const uint8_t* from[4] = {planes[0], planes[1], planes[2], nullptr};
    av_image_copy(frame->data, frame->linesize, from, strides, AV_PIX_FMT_YUV420P, QD_PICTURE_WIDTH,
        QD_PICTURE_HEIGHT);
}

void qd_av_from_frame(const AVFrame* frame, char* picture)
{
    const uint8_t* from[4] = {frame->data[0], frame->data[1], frame->data[2], nullptr};
    av_image_copy_to_buffer(reinterpret_cast<uint8_t*>(picture), QD_PICTURE_SIZE, from,
        frame->linesize, AV_PIX_FMT_YUV420P, QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT, 1);
}
