#include "audio/capture_thread.h"

#include "audio/audio_app.h"

int QD_AudioCapThread::run()
{
    while (running != 0)
        app_->send_audio();
    return 0;
}
