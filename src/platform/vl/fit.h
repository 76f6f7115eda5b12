// Pictures of any size and format made into ours.
#pragma once

#include "platform/vl/av.h"

/// Scales by area. One thread at a time.
class QD_Fit {
public:
    enum Way { CROP, LETTERBOX }; // lose the edges, or add black ones

    explicit QD_Fit(Way way) : way_(way) {}

    /// Converts `frame`, which may be cropped on the way, to `out`
    /// (QD_PICTURE_SIZE bytes). Returns 0, or -1 for a picture that cannot be used.
    int fit(AVFrame* frame, char* out);

private:
    int scale(const AVFrame* frame, char* out, int left, int top, int width, int height);

    const Way way_;
    QD_Av_Scaler scaler_;
};
