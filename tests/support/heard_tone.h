// Listening for a tone at a client's loudspeaker.
#pragma once

#include "tests/support/signal_math.h"
#include "tests/support/wait.h"
#include "tests/support/wav.h"

/// Whether half a second of a test microphone's tone, as loud as it was sent, comes into the file
/// from now on.
inline bool qd_hears(const std::string& wav, double hertz)
{
    constexpr size_t TIME = 4000;
    const size_t begin = qd_read_wav(wav).size() + 1600; // two packets may be on their way
    return qd_wait_for(
        [&] {
            const std::vector<short> heard = qd_read_wav(wav);
            return heard.size() >= begin + TIME
                && qd_amplitude(std::span(heard).last(TIME), hertz) > 7000;
        },
        std::chrono::seconds(60));
}
