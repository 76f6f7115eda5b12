// What a loudspeaker plays: whether all the voices that belong there sound.
#pragma once

#include "tests/support/process.h"
#include "tests/support/temp_dir.h"

#include "platform/base/fd.h"

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

/// Records what a sink of the sound server plays, and looks for tones in windows of 100 ms.
class QD_Soak_Loudspeaker {
public:
    using Clock = std::chrono::steady_clock;

    /// `tones` are in hertz, each a multiple of 10 with nothing else played within 10 Hz of it.
    QD_Soak_Loudspeaker(const std::string& sink, const std::vector<int>& tones);
    ~QD_Soak_Loudspeaker();

    const std::string& sink() const { return sink_; }

    /// Begins to record, again whenever the sound server is another one.
    void record();

    struct Played {
        bool steady;             // all tones have sounded for STEADY now
        Clock::time_point since; // from when on they have, if so; not before the time asked for
        std::string missed;      // what the last incomplete window had not, " 500 Hz 600 Hz"
    };

    /// What is played from that time on. Any thread.
    Played played_since(Clock::time_point when) const;

private:
    void listen(const std::stop_token& stop);
    void judge(std::span<const int16_t> window);

    const std::string sink_;
    const std::vector<int> tones_;
    const QD_Temp_Dir dir_;
    QD_Fd pipe_; // from the recorder to the listening thread
    std::optional<QD_Process> recorder_;
    mutable std::mutex mutex_;               // of the following
    std::optional<Clock::time_point> since_; // all windows from here on were complete
    Clock::time_point newest_;               // when the newest window was
    std::string missed_;                     // what the last incomplete window had not
    std::jthread thread_;                    // goes first
};
