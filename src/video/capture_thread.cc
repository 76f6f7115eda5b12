#include "video/capture_thread.h"

#include "video/video_app.h"

int QD_VideoCapThread::run()
{
    while (running != 0)
        app_->send_video();
    return 0;
}
