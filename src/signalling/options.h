// The user's options and their image in the options file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

/// The user's network link, which decides codecs and bit rates.
enum Connection : int32_t { _modem28 = 0, _isdn = 1, _isdn2 = 2, _lan = 3 };

/// One user's settings. Texts are UTF-8 and always terminated. The user
/// interface thread writes it, the media applications copy it in update_options.
struct _options {
    static constexpr size_t IMAGE_SIZE = 280;

    Connection connection = _modem28;    // values beyond the enumeration may be in a file
    int32_t auto_accept = 1;             // not 0: accept every invitation at once
    char local_name[50] = "user";        // what calls give as the user's name
    char email[100] = "";                // kept in the file; nothing uses it
    char server_name[100] = "localhost"; // likewise
    int32_t manual_switch = 0;           // likewise
    int32_t volume = 125;                // speaker gain, 0..255
    int32_t mic_volume = 125;            // microphone attenuation, 0..255
    int32_t fps_max = 5;                 // pictures a second
    int32_t mic_cutoff = 0;              // 0..99, frames below it are not sent

    /// Writes the file image: integers big-endian, each field at its fixed offset.
    void encode(std::span<uint8_t, IMAGE_SIZE> out) const;

    /// Reads the file image. Texts without an end are cut.
    static _options decode(std::span<const uint8_t, IMAGE_SIZE> in);
};
