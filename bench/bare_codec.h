// The public library's coder and decoder with nothing of ours around them.
#pragma once

#include "platform/vl/codec.h"

/// Codes pictures and decodes them again. One thread.
class QD_Bare_Codec {
public:
    QD_Bare_Codec(QD_Codec codec, int fps);

    /// Codes a picture (QD_PICTURE_SIZE bytes) with a quantiser from 1 to 31.
    void encode(const char* picture, bool intra, double quantiser);

    /// Decodes what was coded last.
    void decode();

private:
    QD_Av_Codec coder_;
    QD_Av_Codec decoder_;
    QD_Av_Frame frame_;
    QD_Av_Frame decoded_;
    QD_Av_Packet packet_;
    int64_t number_ = 0;
};
