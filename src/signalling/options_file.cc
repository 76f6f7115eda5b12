#include "signalling/options_file.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <unistd.h>

namespace {

constexpr size_t MAX_PATH = 199; // a longer home path is refused

using Image = std::array<uint8_t, _options::IMAGE_SIZE>;

struct Close_File {
    void operator()(FILE* file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, Close_File>;

// The file's path, "" if there is none.
std::string file_path()
{
    const char* home = getenv("HOME");
    if (home == nullptr)
        return "";
    std::string path = std::string(home) + "/.qd.cfg";
    return path.size() <= MAX_PATH ? path : "";
}

}

int qd_read_options_file(_options* options)
{
    const File file(fopen(file_path().c_str(), "rbe"));
    if (!file)
        return -1;
    Image image {};
    if (fread(image.data(), 1, image.size(), file.get()) != image.size())
        return -1;
    *options = _options::decode(image);
    return 0;
}

int qd_write_options_file(const _options& options)
{
    const std::string path = file_path();
    if (path.empty())
        return -1;
    Image image {};
    options.encode(image);

    // Two programs of one user may end together: each writes a file of its own.
    const std::string fresh = path + "." + std::to_string(getpid());
    File file(fopen(fresh.c_str(), "wbe"));
    if (!file)
        return -1;
    const bool written = fwrite(image.data(), 1, image.size(), file.get()) == image.size()
        && fflush(file.get()) == 0 && fsync(fileno(file.get())) == 0;
    file.reset();
    if (!written || rename(fresh.c_str(), path.c_str()) != 0) {
        unlink(fresh.c_str());
        return -1;
    }
    return 0;
}
