#include "tests/fuzz/datagrams.h"
#include "video/video_app.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

// No trace is written where no file can be made.
QD_Datagrams<QD_VideoApp>* make()
{
    const QD_Fd here(::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    qd_require(::chdir("/proc") == 0);
    auto* video = new QD_Datagrams<QD_VideoApp>;
    qd_require(::fchdir(here.get()) == 0);
    return video;
}

}

void qd_fuzz(QD_Fuzz_Input input)
{
    static const std::unique_ptr<QD_Datagrams<QD_VideoApp>> video(make());
    video->feed(input);
}
