// A PulseAudio server of a test's own, with a loudspeaker and a microphone that
// are null sinks; and children that cannot outlive the test.
#pragma once

#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

/// A child process, killed when this object or the test goes.
class QD_Child {
public:
    /// Starts `command`; its standard output goes to `out`, its errors to `errors`.
    explicit QD_Child(std::vector<std::string> command, const std::string& out = "/dev/null",
        const std::string& errors = "/dev/null")
    {
        std::vector<char*> args;
        for (std::string& word : command)
            args.push_back(word.data());
        args.push_back(nullptr);
        const pid_t parent = getpid();
        pid_ = fork();
        if (pid_ != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(127);
        constexpr int MODE = O_WRONLY | O_CREAT | O_TRUNC;
        dup2(open(out.c_str(), MODE, 0600), STDOUT_FILENO);
        dup2(open(errors.c_str(), MODE, 0600), STDERR_FILENO);
        execvp(args[0], args.data());
        _exit(127);
    }
    ~QD_Child() { end(SIGKILL); }
    QD_Child(QD_Child&& other) noexcept : pid_(other.pid_) { other.pid_ = -1; }
    QD_Child(const QD_Child&) = delete;
    QD_Child& operator=(const QD_Child&) = delete;

    /// Sends the signal (0: none) and waits for the end. Returns the exit status, -1 if killed.
    int end(int signal)
    {
        if (pid_ <= 0)
            return -1;
        if (signal != 0)
            kill(pid_, signal);
        int status = 0;
        waitpid(pid_, &status, 0);
        pid_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t pid_;
};

/// Asks `condition` until it is true, at most for `bound`. Returns whether it became true.
template <typename Condition>
bool qd_eventually(
    Condition condition, std::chrono::milliseconds bound = std::chrono::milliseconds(10'000))
{
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

/// A directory of the test's own, removed at the end.
class QD_Temp_Dir {
public:
    QD_Temp_Dir()
    {
        std::string name = std::filesystem::temp_directory_path() / "quendal-XXXXXX";
        path_ = mkdtemp(name.data());
    }
    ~QD_Temp_Dir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    QD_Temp_Dir(const QD_Temp_Dir&) = delete;
    QD_Temp_Dir& operator=(const QD_Temp_Dir&) = delete;

    std::string operator/(const std::string& name) const { return path_ + "/" + name; }
    const std::string& path() const { return path_; }

private:
    std::string path_;
};

/// The server. PULSE_SERVER and XDG_RUNTIME_DIR point to it from construction
/// on, whether it runs or not; it lives in a directory of its own.
class QD_Pulse_Server {
public:
    // What plays to SPEAKER is heard by recording SPEAKER_MONITOR; what plays to
    // MIC_FEED is heard by whoever records MIC, which is the default source.
    static constexpr const char* SPEAKER = "speaker";
    static constexpr const char* SPEAKER_MONITOR = "speaker.monitor";
    static constexpr const char* MIC_FEED = "micfeed";
    static constexpr const char* MIC = "microphone";

    QD_Pulse_Server()
    {
        setenv("PULSE_SERVER", ("unix:" + (dir_ / "native")).c_str(), 1);
        setenv("XDG_RUNTIME_DIR", dir_.path().c_str(), 1);
    }
    ~QD_Pulse_Server() { crash(); }

    /// Starts it, or starts it again, and waits until it answers. Returns whether it does.
    bool start()
    {
        const std::string format = " format=s16le rate=8000 channels=1 norewinds=1";
        crash();
        server_.emplace_back(
            std::vector<std::string> {"env", "HOME=" + dir_.path(), "pulseaudio", "-n",
                "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "--realtime=no",
                "--high-priority=no", "-L",
                "module-native-protocol-unix auth-anonymous=1 socket=" + (dir_ / "native"), "-L",
                std::string("module-null-sink sink_name=") + SPEAKER + format, "-L",
                std::string("module-null-sink sink_name=") + MIC_FEED + format, "-L",
                std::string("module-remap-source source_name=") + MIC + " master=" + MIC_FEED
                    + ".monitor",
                "--log-target=stderr"},
            "/dev/null", dir_ / "log");
        return qd_eventually([&] {
            return run({"pactl", "info"}) == 0;
        }) && run({"pactl", "set-default-source", MIC}) == 0
            && run({"pactl", "set-default-sink", SPEAKER}) == 0;
    }

    /// Kills it as a crash would.
    void crash() { server_.clear(); }

    /// Runs a command to its end. Returns its exit status; `output` gets what it printed.
    int run(const std::vector<std::string>& command, std::string* output = nullptr) const
    {
        const int status = QD_Child(command, dir_ / "output").end(0);
        std::ifstream in(dir_ / "output");
        if (output)
            output->assign(std::istreambuf_iterator<char>(in), {});
        return status;
    }

    const QD_Temp_Dir& directory() const { return dir_; }

private:
    QD_Temp_Dir dir_;
    std::vector<QD_Child> server_; // none or one
};

/// Records a source (8000 Hz, mono) to memory from construction on.
class QD_Pulse_Recording {
public:
    QD_Pulse_Recording(const QD_Pulse_Server& server, const std::string& source) :
        file_(server.directory() / (source + ".raw")),
        child_({"parec", "-d", source, "--raw", "--format=s16le", "--rate=8000", "--channels=1",
                   "--latency-msec=20"},
            file_)
    {
    }

    /// What has been heard so far.
    std::vector<int16_t> samples() const
    {
        std::ifstream in(file_, std::ios::binary);
        const std::string bytes(std::istreambuf_iterator<char>(in), {});
        std::vector<int16_t> heard;
        for (size_t i = 0; i + 1 < bytes.size(); i += 2)
            heard.push_back(static_cast<int16_t>(
                static_cast<uint8_t>(bytes[i]) | static_cast<uint8_t>(bytes[i + 1]) << 8));
        return heard;
    }

    /// Waits until so many samples are there.
    bool wait_for(size_t count) const
    {
        return qd_eventually([&] { return samples().size() >= count; });
    }

private:
    std::string file_;
    QD_Child child_;
};
