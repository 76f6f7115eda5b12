#include "tests/fuzz/datagrams.h"
#include "video/video_app.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

// No trace is written where no file can be made.
QD_Datagrams<QD_VideoApp>* make()
{
    qd_fuzz_environment();
    const QD_Fd here(::open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    qd_require(::chdir("/proc") == 0);
    auto* video = new QD_Datagrams<QD_VideoApp>;
    qd_require(::fchdir(here.get()) == 0);
    return video;
}

}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const std::unique_ptr<QD_Datagrams<QD_VideoApp>> video(make());
    video->feed({data, size});
    return 0;
}
