// The two picture codecs as objects: one encoder, one decoder for each stream.
#pragma once

#include "platform/vl/av.h"
#include "platform/vl/picture.h"

#include <cstdint>
#include <vector>

/// ITU-T H.263 baseline (version 1, no optional modes) and H.261, both QCIF.
enum class QD_Codec { H263, H261 };

/// Codes one stream. One thread at a time.
class QD_Picture_Encoder {
public:
    explicit QD_Picture_Encoder(QD_Codec codec) : codec_(codec) {}

    /// Starts afresh: the next picture is intra. `cap` is what one picture
    /// should not exceed (it is then coded again, coarser, while that is
    /// possible). Returns 0, or -1 if the library refuses; nothing can be coded then.
    int open(int fps, int cap);

    /// Forgets what open() set up.
    void close() { context_.reset(); }

    /// Codes a picture (QD_PICTURE_SIZE bytes) with quantiser 1..31 into `out`,
    /// which has room for QD_CODED_SIZE. Returns the byte count, at most
    /// QD_CODED_SIZE, or -1.
    int encode(const char* picture, bool intra, double quantiser, char* out);

    /// Between open() and close(), before encode(): in place of the cap, the
    /// picture after the one about to be coded should take so many bytes at
    /// most, less those of that one if `is_shared`.
    void set_next_room(int bytes, bool is_shared);

    /// Of the last picture: the quantiser it was coded with in the end, and the
    /// mean square of the error in its luminance.
    double get_quantiser() const;
    double get_error() const;

private:
    int code_once(const char* picture, bool intra, double quantiser);
    int code_softened(const char* picture);
    void count_room(int size);

    const QD_Codec codec_;
    QD_Av_Codec context_;
    QD_Av_Frame frame_;
    QD_Av_Packet packet_;
    bool intra_next_ = true;
    int64_t number_ = 0;
    int room_ = 0; // bits that the next picture may take
};

/// Fills a picture (QD_PICTURE_SIZE bytes) with black.
void qd_make_black(char* out);

/// Decodes one stream. One thread at a time. Any bytes may be fed to it.
class QD_Picture_Decoder {
public:
    explicit QD_Picture_Decoder(QD_Codec codec);

    /// Decodes one coded picture. Returns 0 and fills `out` (QD_PICTURE_SIZE
    /// bytes); or -1 with `out` unchanged if no picture came of it: it is not a
    /// QCIF picture of this codec, is damaged beyond use, or (H.263) comes
    /// before the first intra picture.
    int decode(const char* bits, int len, char* out);

    /// Copies the last picture that was decoded, black before the first.
    void get_last(char* out) const;

private:
    bool is_acceptable(const uint8_t* bits, int len) const;

    const QD_Codec codec_;
    QD_Av_Codec context_;
    QD_Av_Frame frame_;
    QD_Av_Frame last_;
    QD_Av_Packet packet_;
    std::vector<uint8_t> padded_; // the library reads beyond the end
    bool seen_intra_ = false;
};
