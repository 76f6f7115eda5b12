#include "tests/fuzz/datagrams.h"
#include "video/video_app.h"

void qd_fuzz(QD_Fuzz_Input input)
{
    static QD_Datagrams<QD_VideoApp> video;
    video.feed(input);
}
