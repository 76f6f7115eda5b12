// The video library: camera, H.263, H.261, and raw pictures of another shape.
//
// Pictures are QCIF and nothing else, QD_PICTURE_SIZE bytes (picture.h); where
// a size is asked for, it is 176 x 144. Returned pictures belong to the caller.
//
// There is one camera, one encoder of each kind and one decoder of each kind
// for every stream 0..QD_STREAMS-1, for the whole process. Everything but
// getFrame() shares library state: the caller sees to it that one thread at a
// time calls it.
#pragma once

#include "platform/vl/picture.h"

#include <memory>

constexpr int QD_STREAMS = 100;

using QD_Picture_Ptr = std::unique_ptr<char[]>;

/// Opens the camera that QD_CAMERA names (see camera.h) on a thread of its own
/// and returns at once: 0, or -1 if it cannot be done (the test card stands in).
int initcapture(int width, int height);

/// The current picture, never null: waits until one is due, at most one second.
/// The test card stands in for a camera that is missing or stalls. One thread.
QD_Picture_Ptr getFrame(int width, int height);

/// Tells camera and encoders of the link: `kbps` kbit/s in at most `fps`
/// pictures a second. Encoders start afresh with an intra picture. What is out
/// of range stands for the nearest.
void qd_set_video_rate(double kbps, int fps);

/// Closes the camera and forgets all encoders and decoders.
void qd_vl_shutdown();

/// Set up one codec; 0, or -1 if the size is not QCIF or the library refuses.
int H263initEncoder(int width, int height);
int H263initDecoder();
int init_codec();
int init_encoder();
int init_decoder();

/// Code a picture into `out`, which has room for QD_CODED_SIZE bytes; with
/// the quantiser that suits the link. Return the byte count, -1 for none. A
/// predicted picture may come out as intra where there is nothing to predict from.
int H263codeIntraFrame(const char* picture, char* out);
int H263codeFrame(const char** picture, char* out);
int p64EncodeIntraFrame(const char* picture, char* out);
int p64EncodeFrame(const char* picture, char* out);

/// Decodes a picture of stream `id`. Null if none is complete: damaged beyond
/// use, of another size, before the first intra picture, or `id` out of range.
QD_Picture_Ptr H263decodeFrame(int id, const char* bits, int len);

/// The same, but always fills `out`: with the stream's last good picture, black
/// before the first, where no new one is complete. `reserved` is not used.
void decode_frame(const char* bits, int len, char* out, int reserved, int id);

/// Forgets both decoders of a stream, as if nothing had come of it yet.
void qd_reset_decoder(int id);

/// A raw YUV9 picture: planes Y, V, U, colour at a quarter of the size.
constexpr int QD_YUV9_SIZE = QD_LUMA_SIZE + 2 * (QD_PICTURE_WIDTH / 4) * (QD_PICTURE_HEIGHT / 4);

/// Converts a YUV9 picture (`width` * `height` * 9 / 8 bytes, sides divisible
/// by four) into the three planes with colour at half size.
void YVU9toYUV411(const char* src, char* y, char* u, char* v, int width, int height);
