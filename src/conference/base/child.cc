#include "conference/base/child.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace {

/// Everything the new process needs, made before the fork: after it only
/// system calls are safe.
struct Image {
    std::vector<std::string> texts;
    std::vector<char*> argv;
    std::vector<char*> envp;

    explicit Image(const QD_Launch& launch);
};

bool overridden(std::string_view entry, const std::vector<std::string>& by)
{
    const std::string_view name = entry.substr(0, entry.find('=') + 1);
    for (const std::string& other : by) {
        if (std::string_view(other).starts_with(name))
            return true;
    }
    return false;
}

Image::Image(const QD_Launch& launch)
{
    texts.push_back(launch.program);
    texts.insert(texts.end(), launch.arguments.begin(), launch.arguments.end());
    const size_t arguments = texts.size();
    texts.insert(texts.end(), launch.environment.begin(), launch.environment.end());
    for (char** entry = environ; *entry != nullptr; ++entry) {
        if (!overridden(*entry, launch.environment))
            texts.emplace_back(*entry);
    }
    for (size_t i = 0; i < texts.size(); ++i)
        (i < arguments ? argv : envp).push_back(texts[i].data());
    argv.push_back(nullptr);
    envp.push_back(nullptr);
}

[[noreturn]] void complain(const char* what, const char* name)
{
    for (const char* text : {"cannot ", what, " ", name, ": ", strerrordesc_np(errno), "\n"}) {
        [[maybe_unused]] ssize_t ignored = ::write(STDERR_FILENO, text, strlen(text));
    }
    ::_exit(127);
}

[[noreturn]] void become(const QD_Launch& launch, const Image& image, pid_t parent)
{
    ::setpgid(0, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) // it died before the kernel knew of our wish
        ::_exit(127);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);

    const int input = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::dup2(input, STDIN_FILENO);
    if (!launch.log.empty()) {
        const int log
            = ::open(launch.log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0600);
        if (log < 0)
            complain("write", launch.log.c_str());
        ::dup2(log, STDOUT_FILENO);
        ::dup2(log, STDERR_FILENO);
    }
    if (!launch.directory.empty() && ::chdir(launch.directory.c_str()) < 0)
        complain("enter", launch.directory.c_str());
    ::execve(image.argv[0], image.argv.data(), image.envp.data());
    complain("run", image.argv[0]);
}

}

QD_Child::~QD_Child()
{
    if (runs())
        kill();
}

void QD_Child::kill()
{
    signal(SIGKILL);
    while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {}
    pid_ = 0;
}

int QD_Child::start(const QD_Launch& launch)
{
    const Image image(launch);
    const pid_t parent = ::getpid();
    const pid_t pid = ::fork();
    if (pid < 0)
        return -1;
    if (pid == 0)
        become(launch, image, parent);

    ::setpgid(pid, pid); // on both sides, so that neither has to wait for the other
    pid_ = pid;
    log_ = launch.log;
    pidfd_.reset(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0))); // is close-on-exec
    if (pidfd_)
        return 0;
    const int error = errno;
    kill(); // nobody would hear of its end
    errno = error;
    return -1;
}

void QD_Child::signal(int number) const
{
    if (runs()) // not waited for yet, so that the number is still its own
        ::kill(-pid_, number);
}

void QD_Child::bound_log() const
{
    struct stat log {};
    if (!log_.empty() && ::stat(log_.c_str(), &log) == 0 && S_ISREG(log.st_mode)
        && log.st_size > MAX_LOG) [[maybe_unused]]
        const int ignored = ::truncate(log_.c_str(), 0);
}

bool QD_Child::take_end()
{
    if (!runs() || ::waitpid(pid_, &status_, WNOHANG) != pid_)
        return false;
    pid_ = 0;
    pidfd_.reset();
    return true;
}

bool QD_Child::ended_well() const { return WIFEXITED(status_) && WEXITSTATUS(status_) == 0; }

std::string QD_Child::how_it_ended() const
{
    if (WIFEXITED(status_))
        return "exit status " + std::to_string(WEXITSTATUS(status_));
    const int number = WTERMSIG(status_);
    const char* words = sigdescr_np(number);
    return "signal " + std::to_string(number) + " (" + (words != nullptr ? words : "unknown") + ")";
}
