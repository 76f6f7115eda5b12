#include "audio/audio_app.h"
#include "tests/fuzz/datagrams.h"

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    [[maybe_unused]] static const bool prepared = (qd_fuzz_environment(), true);
    static QD_Datagrams<QD_AudioApp> audio;
    static QD_AudioPlay another; // the device stays
    [[maybe_unused]] static const int opened = another.open();
    audio.feed({data, size});
    return 0;
}
