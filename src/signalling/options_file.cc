#include "signalling/options_file.h"

#include "platform/base/fd.h"

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr size_t MAX_PATH = 199; // a longer home path is refused

using Image = std::array<uint8_t, _options::IMAGE_SIZE>;

// The file's path, "" if there is none.
std::string file_path()
{
    const char* home = getenv("HOME");
    if (home == nullptr)
        return "";
    std::string path = std::string(home) + "/.qd.cfg";
    return path.size() <= MAX_PATH ? path : "";
}

namespace fs = std::filesystem;

// Where symbolic links lead to, also if nothing is there yet; "" if they lead in a circle.
fs::path follow_links(fs::path path)
{
    constexpr int MOST_LINKS = 40; // as the system itself
    for (int i = 0; i < MOST_LINKS; ++i) {
        std::error_code error;
        const fs::path target = fs::read_symlink(path, error);
        if (error)
            return path;
        path = path.parent_path() / target; // `target` alone, if it begins at the root
    }
    return "";
}

// Writes and closes a new file. Returns 0 or -1.
int write_file(const char* path, mode_t mode, const Image& image)
{
    QD_Fd file(::open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    const bool written = file && ::fchmod(file.get(), mode) == 0 // whatever the umask
        && ::write(file.get(), image.data(), image.size()) == static_cast<ssize_t>(image.size())
        && ::fsync(file.get()) == 0;
    return written ? 0 : -1;
}

}

int qd_read_options_file(_options* options)
{
    // Opening a pipe would wait for its writer.
    const QD_Fd file(::open(file_path().c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    Image image {};
    if (!file
        || ::read(file.get(), image.data(), image.size()) != static_cast<ssize_t>(image.size()))
        return -1;
    *options = _options::decode(image);
    return 0;
}

int qd_write_options_file(const _options& options)
{
    const fs::path path = follow_links(file_path());
    struct stat before {};
    const bool there = ::stat(path.c_str(), &before) == 0;
    if (path.empty() || (there && !S_ISREG(before.st_mode)))
        return -1;
    Image image {};
    options.encode(image);

    // Two programs of one user may end together: each writes a file of its own.
    const std::string fresh = path.string() + "." + std::to_string(getpid());
    ::unlink(fresh.c_str()); // of a process of the same number that was killed
    const mode_t mode = there ? before.st_mode & 07777 : 0600;
    if (write_file(fresh.c_str(), mode, image) == 0 && ::rename(fresh.c_str(), path.c_str()) == 0)
        return 0;
    ::unlink(fresh.c_str());
    return -1;
}
