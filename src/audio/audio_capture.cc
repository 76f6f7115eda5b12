#include "audio/audio_capture.h"

#include "audio/port_config.h"

void QD_AudioCapture::init() { set_rate(8000); }

int QD_AudioCapture::set_rate(long rate)
{
    const long pairs[] = {AL_INPUT_RATE, rate};
    ALsetparams(AL_DEFAULT_DEVICE, pairs, 2);
    return 0;
}

int QD_AudioCapture::set_gain(long g)
{
    const long pairs[] = {AL_LEFT_INPUT_ATTEN, g, AL_RIGHT_INPUT_ATTEN, g};
    ALsetparams(AL_DEFAULT_DEVICE, pairs, 4);
    return 0;
}

int QD_AudioCapture::get_gain()
{
    long pairs[] = {AL_LEFT_INPUT_ATTEN, 0, AL_RIGHT_INPUT_ATTEN, 0};
    ALgetparams(AL_DEFAULT_DEVICE, pairs, 4);
    return static_cast<int>((pairs[1] + pairs[3]) / 2);
}

int QD_AudioCapture::open() { return qd_open_audio_port("mic", "r", conf, port); }

void QD_AudioCapture::close() { qd_close_audio_port(conf, port); }

int QD_AudioCapture::capture(int16_t* buf, int n)
{
    ALreadsamps(port, buf, n);
    return 0;
}
