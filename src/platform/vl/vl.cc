#include "platform/vl/vl.h"

#include "platform/base/clock.h"
#include "platform/vl/camera.h"
#include "platform/vl/capture.h"
#include "platform/vl/codec.h"
#include "platform/vl/link_coder.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace {

constexpr double MIN_KBPS = 1;
constexpr double MAX_KBPS = 100'000;
constexpr int MAX_FPS = 30;

bool is_qcif(int width, int height)
{
    return width == QD_PICTURE_WIDTH && height == QD_PICTURE_HEIGHT;
}

/// One codec with all its streams.
class Coder {
public:
    explicit Coder(QD_Codec codec) : codec_(codec), coder_(codec) {}

    int open_encoder(double kbps, int fps) { return coder_.open(kbps, fps); }

    int encode(const char* picture, bool intra, char* out)
    {
        const auto now = QD_Clock::real().now().time_since_epoch();
        return coder_.encode(picture, intra, std::chrono::duration<double>(now).count(), out);
    }

    // Null for an id that is no stream's.
    QD_Picture_Decoder* decoder(int id)
    {
        if (id < 0 || id >= QD_STREAMS)
            return nullptr;
        auto& decoder = decoders_[static_cast<size_t>(id)];
        if (!decoder)
            decoder = std::make_unique<QD_Picture_Decoder>(codec_);
        return decoder.get();
    }

    void forget_decoder(int id) { decoders_[static_cast<size_t>(id)].reset(); }

    void forget_all()
    {
        coder_.close();
        decoders_ = {};
    }

private:
    const QD_Codec codec_;
    QD_Link_Coder coder_;
    std::array<std::unique_ptr<QD_Picture_Decoder>, QD_STREAMS> decoders_;
};

struct Library {
    Coder h263 {QD_Codec::H263};
    Coder h261 {QD_Codec::H261};
    std::unique_ptr<QD_Capture> capture;
    double kbps = QD_Quantiser::FIRST_KBPS;
    int fps = QD_Quantiser::FIRST_FPS;
};

// Never destroyed: a process that loses its framework or its display ends with threads in it.
Library& library()
{
    static auto* const the_library = new Library;
    return *the_library;
}

int open_encoder(Coder& coder) { return coder.open_encoder(library().kbps, library().fps); }

}

int initcapture(int width, int height)
{
    if (!is_qcif(width, height))
        return -1;
    auto& capture = library().capture;
    capture.reset();
    capture = std::make_unique<QD_Capture>(qd_make_camera(getenv("QD_CAMERA")));
    capture->set_rate(library().fps);
    return capture->start();
}

QD_Picture_Ptr getFrame(int /*width*/, int /*height*/)
{
    auto picture = std::make_unique_for_overwrite<char[]>(QD_PICTURE_SIZE);
    library().capture->get(picture.get());
    return picture;
}

void qd_set_video_rate(double kbps, int fps)
{
    Library& all = library();
    all.kbps = std::clamp(kbps, MIN_KBPS, MAX_KBPS);
    all.fps = std::clamp(fps, 1, MAX_FPS);
    open_encoder(all.h263);
    open_encoder(all.h261);
    if (all.capture)
        all.capture->set_rate(all.fps);
}

void qd_vl_shutdown()
{
    library().capture.reset();
    library().h263.forget_all();
    library().h261.forget_all();
}

int H263initEncoder(int width, int height)
{
    return is_qcif(width, height) ? open_encoder(library().h263) : -1;
}

// Decoders are made as their streams appear.
int H263initDecoder() { return 0; }
int init_codec() { return 0; }
int init_encoder() { return open_encoder(library().h261); }
int init_decoder() { return 0; }

int H263codeIntraFrame(const char* picture, char* out)
{
    return library().h263.encode(picture, true, out);
}

int H263codeFrame(const char** picture, char* out)
{
    return library().h263.encode(*picture, false, out);
}

int p64EncodeIntraFrame(const char* picture, char* out)
{
    return library().h261.encode(picture, true, out);
}

int p64EncodeFrame(const char* picture, char* out)
{
    return library().h261.encode(picture, false, out);
}

QD_Picture_Ptr H263decodeFrame(int id, const char* bits, int len)
{
    QD_Picture_Decoder* decoder = library().h263.decoder(id);
    auto picture = std::make_unique_for_overwrite<char[]>(QD_PICTURE_SIZE);
    if (decoder == nullptr || decoder->decode(bits, len, picture.get()) < 0)
        picture.reset();
    return picture;
}

void decode_frame(const char* bits, int len, char* out, int /*reserved*/, int id)
{
    QD_Picture_Decoder* decoder = library().h261.decoder(id);
    if (decoder == nullptr)
        qd_make_black(out);
    else if (decoder->decode(bits, len, out) < 0)
        decoder->get_last(out);
}

void qd_reset_decoder(int id)
{
    if (id < 0 || id >= QD_STREAMS)
        return;
    library().h263.forget_decoder(id);
    library().h261.forget_decoder(id);
}
