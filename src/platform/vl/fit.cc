#include "platform/vl/fit.h"

#include "platform/vl/codec.h"
#include "platform/vl/picture.h"

#include <algorithm>

namespace {

constexpr int LARGEST_SIDE = 16384;

// Cuts what is too wide or too high for our shape.
int crop(AVFrame* frame)
{
    const int width = std::min(frame->width, frame->height * QD_PICTURE_WIDTH / QD_PICTURE_HEIGHT);
    const int height = std::min(frame->height, frame->width * QD_PICTURE_HEIGHT / QD_PICTURE_WIDTH);
    frame->crop_left = static_cast<size_t>((frame->width - width) / 2);
    frame->crop_right = static_cast<size_t>(frame->width - width) - frame->crop_left;
    frame->crop_top = static_cast<size_t>((frame->height - height) / 2);
    frame->crop_bottom = static_cast<size_t>(frame->height - height) - frame->crop_top;
    return av_frame_apply_cropping(frame, AV_FRAME_CROP_UNALIGNED);
}

// How wide (or high) it becomes when the other side fills ours; even, and never nothing.
int shrunk(int side, int other, int other_ours, int ours)
{
    const long length = long {side} * other_ours / other;
    return static_cast<int>(std::clamp(length & ~1L, 2L, long {ours}));
}

}

int QD_Fit::fit(AVFrame* frame, char* out)
{
    if (frame->width < 2 || frame->height < 2 || frame->width > LARGEST_SIDE
        || frame->height > LARGEST_SIDE)
        return -1;
    if (way_ == CROP)
        return crop(frame) < 0 ? -1 : scale(frame, out, 0, 0, QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT);
    const int width = shrunk(frame->width, frame->height, QD_PICTURE_HEIGHT, QD_PICTURE_WIDTH);
    const int height = shrunk(frame->height, frame->width, QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT);
    const int left = (QD_PICTURE_WIDTH - width) / 2 & ~1;
    const int top = (QD_PICTURE_HEIGHT - height) / 2 & ~1;
    qd_make_black(out);
    return scale(frame, out, left, top, width, height);
}

int QD_Fit::scale(const AVFrame* frame, char* out, int left, int top, int width, int height)
{
    const auto format = static_cast<AVPixelFormat>(frame->format);
    scaler_.reset(sws_getCachedContext(scaler_.release(), frame->width, frame->height, format,
        width, height, AV_PIX_FMT_YUV420P, SWS_AREA, nullptr, nullptr, nullptr));
    if (!scaler_)
        return -1;
    // Cameras with compressed pictures use the full range of values; ours do not.
    const int full_range = frame->color_range == AVCOL_RANGE_JPEG ? 1 : 0;
    sws_setColorspaceDetails(scaler_.get(), sws_getCoefficients(frame->colorspace), full_range,
        sws_getCoefficients(SWS_CS_DEFAULT), 0, 0, 1 << 16, 1 << 16);
    auto* bytes = reinterpret_cast<uint8_t*>(out);
    const int chroma = top / 2 * QD_CHROMA_WIDTH + left / 2;
    uint8_t* const planes[] = {bytes + top * QD_PICTURE_WIDTH + left, bytes + QD_U_OFFSET + chroma,
        bytes + QD_V_OFFSET + chroma, nullptr};
    const int strides[] = {QD_PICTURE_WIDTH, QD_CHROMA_WIDTH, QD_CHROMA_WIDTH, 0};
    const int rows
        = sws_scale(scaler_.get(), frame->data, frame->linesize, 0, frame->height, planes, strides);
    return rows == height ? 0 : -1;
}
