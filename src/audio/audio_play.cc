#include "audio/audio_play.h"

#include "audio/port_config.h"

void QD_AudioPlay::init() { set_rate(8000); }

int QD_AudioPlay::set_rate(long rate)
{
    const long pairs[] = {AL_OUTPUT_RATE, rate};
    ALsetparams(AL_DEFAULT_DEVICE, pairs, 2);
    return 0;
}

int QD_AudioPlay::set_volume(long v)
{
    const long pairs[] = {AL_LEFT_SPEAKER_GAIN, v, AL_RIGHT_SPEAKER_GAIN, v};
    ALsetparams(AL_DEFAULT_DEVICE, pairs, 4);
    return 0;
}

int QD_AudioPlay::get_volume()
{
    long pairs[] = {AL_LEFT_SPEAKER_GAIN, 0, AL_RIGHT_SPEAKER_GAIN, 0};
    ALgetparams(AL_DEFAULT_DEVICE, pairs, 4);
    return static_cast<int>((pairs[1] + pairs[3]) / 2);
}

int QD_AudioPlay::open(long stream)
{
    return qd_open_audio_port("speaker", "w", conf, port, stream);
}

void QD_AudioPlay::close() { qd_close_audio_port(conf, port); }

int QD_AudioPlay::play(const int16_t* buf, int n)
{
    ALwritesamps(port, buf, n);
    return 0;
}
