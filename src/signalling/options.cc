#include "signalling/options.h"

#include "platform/base/bytes.h"

#include <cstring>

namespace {

// Where each field lies in the image.
constexpr size_t CONNECTION = 0;
constexpr size_t AUTO_ACCEPT = 4;
constexpr size_t LOCAL_NAME = 8;
constexpr size_t EMAIL = 58;
constexpr size_t SERVER_NAME = 158;
constexpr size_t MANUAL_SWITCH = 260;
constexpr size_t VOLUME = 264;
constexpr size_t MIC_VOLUME = 268;
constexpr size_t FPS_MAX = 272;
constexpr size_t MIC_CUTOFF = 276;

template <size_t N> void get_text(char (&text)[N], const uint8_t* in)
{
    memcpy(text, in, N);
    text[N - 1] = '\0';
}

// What follows the end of a text is zero in the file, whatever the field held before.
template <size_t N> void put_text(uint8_t* out, const char (&text)[N])
{
    memcpy(out, text, strnlen(text, N - 1));
}

}

void _options::encode(std::span<uint8_t, IMAGE_SIZE> out) const
{
    memset(out.data(), 0, out.size());
    const auto put
        = [&](size_t at, int32_t value) { qd_put_u32(&out[at], static_cast<uint32_t>(value)); };
    put(CONNECTION, connection);
    put(AUTO_ACCEPT, auto_accept);
    put_text(&out[LOCAL_NAME], local_name);
    put_text(&out[EMAIL], email);
    put_text(&out[SERVER_NAME], server_name);
    put(MANUAL_SWITCH, manual_switch);
    put(VOLUME, volume);
    put(MIC_VOLUME, mic_volume);
    put(FPS_MAX, fps_max);
    put(MIC_CUTOFF, mic_cutoff);
}

_options _options::decode(std::span<const uint8_t, IMAGE_SIZE> in)
{
    const auto get = [&](size_t at) { return static_cast<int32_t>(qd_get_u32(&in[at])); };
    _options options;
    options.connection = static_cast<Connection>(get(CONNECTION));
    options.auto_accept = get(AUTO_ACCEPT);
    get_text(options.local_name, &in[LOCAL_NAME]);
    get_text(options.email, &in[EMAIL]);
    get_text(options.server_name, &in[SERVER_NAME]);
    options.manual_switch = get(MANUAL_SWITCH);
    options.volume = get(VOLUME);
    options.mic_volume = get(MIC_VOLUME);
    options.fps_max = get(FPS_MAX);
    options.mic_cutoff = get(MIC_CUTOFF);
    return options;
}
