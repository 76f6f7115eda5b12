#include "audio/audio_app.h"
#include "tests/fuzz/datagrams.h"

void qd_fuzz(QD_Fuzz_Input input)
{
    static QD_Datagrams<QD_AudioApp> audio;
    static QD_AudioPlay another; // the device stays
    [[maybe_unused]] static const int opened = another.open();
    audio.feed(input);
}
