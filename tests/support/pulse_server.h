// A PulseAudio server of a test's own, with two loudspeakers and a microphone that are null sinks.
#pragma once

#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

/// The server. PULSE_SERVER and XDG_RUNTIME_DIR point to it from construction
/// on, whether it runs or not; it lives in a directory of its own.
///
/// What plays to the sink "speaker", the default one, is heard by recording "speaker.monitor";
/// "speaker2" is another such. What plays to "micfeed" is heard by those who record "microphone",
/// the default source.
class QD_Pulse_Server {
public:
    QD_Pulse_Server()
    {
        setenv("PULSE_SERVER", ("unix:" + dir_.file("native")).c_str(), 1);
        setenv("XDG_RUNTIME_DIR", dir_.path().c_str(), 1);
    }

    /// Starts it, or starts it again, and waits until it answers. Returns whether it does.
    bool start()
    {
        const std::string sink = "-Lmodule-null-sink format=s16le rate=8000 channels=1"
                                 " norewinds=1 sink_name=";
        server_.emplace(
            std::vector<std::string> {"pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1",
                "--use-pid-file=no", "--realtime=no", "--high-priority=no", "--log-target=stderr",
                "-Lmodule-native-protocol-unix auth-anonymous=1 socket=" + dir_.file("native"),
                sink + "speaker", sink + "speaker2", sink + "micfeed",
                "-Lmodule-remap-source source_name=microphone master=micfeed.monitor"},
            QD_Surroundings {.out = dir_ / "log", .environment = {{"HOME", dir_.path()}}});
        return qd_wait_for([] {
            return qd_output("pactl set-default-source microphone"
                             " && pactl set-default-sink speaker && echo done")
                == "done\n";
        });
    }

    pid_t pid() const { return server_ ? server_->pid() : 0; }

    /// Kills it as a crash would.
    void crash() { server_.reset(); }

private:
    QD_Temp_Dir dir_;
    std::optional<QD_Process> server_;
};
