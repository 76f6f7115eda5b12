#include "platform/net/fd.h"
#include "signalling/options_file.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/temp_dir.h"

#include <array>
#include <sys/mman.h>
#include <unistd.h>

namespace {

// A home whose options file lies in memory.
struct Home {
    Home()
    {
        setenv("HOME", dir.path().c_str(), 1);
        const std::string path = "/proc/self/fd/" + std::to_string(file.get());
        qd_require(::symlink(path.c_str(), dir.file(".qd.cfg").c_str()) == 0);
    }

    QD_Temp_Dir dir;
    QD_Fd file {::memfd_create("options", MFD_CLOEXEC)};
};

}

// The file, as it is.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const Home home;
    qd_require(::ftruncate(home.file.get(), 0) == 0);
    qd_require(::pwrite(home.file.get(), data, size, 0) == static_cast<ssize_t>(size));

    _options options;
    const bool whole = qd_read_options_file(&options) == 0;
    qd_require(whole == (size >= _options::IMAGE_SIZE));
    std::array<uint8_t, _options::IMAGE_SIZE> once {};
    std::array<uint8_t, _options::IMAGE_SIZE> twice {};
    options.encode(once); // texts without an end would be read beyond their field
    _options::decode(once).encode(twice);
    qd_require(once == twice);
    return 0;
}
