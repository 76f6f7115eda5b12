// A PulseAudio server of a test's own, with a loudspeaker and a microphone that
// are null sinks; and children that cannot outlive the test.
#pragma once

#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

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
        crash();
        std::vector<std::string> command {"env", "HOME=" + dir_.path(), "pulseaudio", "-n",
            "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "--realtime=no",
            "--high-priority=no", "--log-target=stderr"};
        for (const std::string& module :
            {join({"module-native-protocol-unix auth-anonymous=1 socket=", dir_ / "native"}),
                null_sink(SPEAKER), null_sink(MIC_FEED),
                join(
                    {"module-remap-source source_name=", MIC, " master=", MIC_FEED, ".monitor"})}) {
            command.emplace_back("-L");
            command.push_back(module);
        }
        server_.emplace_back(command, to_file("log"));
        return qd_wait_for([&] {
            return run({"pactl", "info"}) == 0;
        }) && run({"pactl", "set-default-source", MIC}) == 0
            && run({"pactl", "set-default-sink", SPEAKER}) == 0;
    }

    /// Kills it as a crash would.
    void crash() { server_.clear(); }

    /// Runs a command to its end. Returns its exit status; `output` gets what it printed.
    int run(const std::vector<std::string>& command, std::string* output = nullptr) const
    {
        unlink((dir_ / "output").c_str());
        const int status = qd_run(command, to_file("output"));
        if (output)
            *output = qd_read_file(dir_ / "output");
        return status;
    }

    const QD_Temp_Dir& directory() const { return dir_; }

private:
    static std::string join(const std::vector<std::string>& parts)
    {
        std::string all;
        for (const std::string& part : parts)
            all += part;
        return all;
    }

    static std::string null_sink(const char* name)
    {
        return join({"module-null-sink sink_name=", name,
            " format=s16le rate=8000 channels=1 norewinds=1"});
    }

    QD_Process::Set_Up to_file(const std::string& name) const
    {
        QD_Process::Set_Up set_up;
        set_up.out = dir_ / name;
        set_up.errors = "&1";
        return set_up;
    }

    QD_Temp_Dir dir_;
    std::vector<QD_Process> server_; // none or one
};

/// Records a source (8000 Hz, mono) to memory from construction on.
class QD_Pulse_Recording {
public:
    QD_Pulse_Recording(const QD_Pulse_Server& server, const std::string& source) :
        file_(server.directory() / (source + ".raw")),
        child_({"parec", "-d", source, "--raw", "--format=s16le", "--rate=8000", "--channels=1",
                   "--latency-msec=20"},
            to(file_))
    {
    }

    /// What has been heard so far.
    std::vector<int16_t> samples() const
    {
        const std::string bytes = qd_read_file(file_);
        std::vector<int16_t> heard;
        for (size_t i = 0; i + 1 < bytes.size(); i += 2)
            heard.push_back(static_cast<int16_t>(
                static_cast<uint8_t>(bytes[i]) | static_cast<uint8_t>(bytes[i + 1]) << 8));
        return heard;
    }

    /// Waits until so many samples are there.
    bool wait_for(size_t count) const
    {
        return qd_wait_for([&] { return samples().size() >= count; });
    }

private:
    static QD_Process::Set_Up to(const std::string& file)
    {
        QD_Process::Set_Up set_up;
        set_up.out = file;
        set_up.errors = "/dev/null";
        return set_up;
    }

    std::string file_;
    QD_Process child_;
};
