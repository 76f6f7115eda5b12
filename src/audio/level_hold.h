// The level that a meter shows: the loudest of the frames just heard.
#pragma once

#include "platform/base/clock.h"
#include "platform/base/mutex.h"

#include <algorithm>
#include <array>

/// Written by a media thread for every frame, read by the control loop. Any
/// thread. Without new frames it falls back to 0.
class QD_Level_Hold {
public:
    /// For how long a frame counts: it lasts 100 ms and comes with some jitter.
    static constexpr std::chrono::milliseconds HOLD {150};

    /// `level` is 0 to 32767.
    void store(int level, QD_Clock::Time now) QD_EXCLUDES(mutex_)
    {
        QD_Lock hold(mutex_);
        frames_[next_] = {level, now};
        next_ = (next_ + 1) % frames_.size();
    }

    int read(QD_Clock::Time now) QD_EXCLUDES(mutex_)
    {
        QD_Lock hold(mutex_);
        int level = 0;
        for (const Frame& frame : frames_)
            if (now - frame.time <= HOLD)
                level = std::max(level, frame.level);
        return level;
    }

private:
    struct Frame {
        int level = 0;
        QD_Clock::Time time;
    };
    QD_Mutex mutex_;
    std::array<Frame, 128> frames_ QD_GUARDED_BY(mutex_);
    size_t next_ QD_GUARDED_BY(mutex_) = 0;
};
