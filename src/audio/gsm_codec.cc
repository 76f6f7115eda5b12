#include "audio/gsm_codec.h"

#include <algorithm>

namespace {

constexpr size_t FRAMES = 5;
constexpr size_t FRAME_SAMPLES = 160;
constexpr size_t FRAME_BYTES = 33;

}

void QD_Gsm_Codec::encode(std::span<const short, SAMPLES> in, std::span<uint8_t, PACKET_SIZE> out)
{
    QD_Lock hold(mutex_);
    for (size_t i = 0; i < FRAMES; ++i) {
        gsm_signal samples[FRAME_SAMPLES];
        std::copy_n(&in[i * FRAME_SAMPLES], FRAME_SAMPLES, samples);
        gsm_encode(state_.get(), samples, &out[i * FRAME_BYTES]);
    }
}

void QD_Gsm_Codec::decode(std::span<const uint8_t, PACKET_SIZE> in, std::span<short, SAMPLES> out)
{
    QD_Lock hold(mutex_);
    for (size_t i = 0; i < FRAMES; ++i) {
        gsm_byte frame[FRAME_BYTES];
        std::copy_n(&in[i * FRAME_BYTES], FRAME_BYTES, frame);
        // A frame without the magic nibble leaves its samples as they are: silence.
        std::fill_n(&out[i * FRAME_SAMPLES], FRAME_SAMPLES, short {0});
        gsm_decode(state_.get(), frame, &out[i * FRAME_SAMPLES]);
    }
}
