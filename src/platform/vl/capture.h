// The camera behind getFrame(): always a picture, in bounded time.
#pragma once

#include "platform/base/clock.h"
#include "platform/base/thread.h"
#include "platform/vl/camera.h"
#include "platform/vl/test_card.h"

#include <atomic>
#include <chrono>
#include <memory>

class QD_Camera_Thread;

/// How patient a capture is with its camera.
struct QD_Capture_Times {
    /// Between attempts to open a camera that is missing or has failed.
    std::chrono::milliseconds retry {2000};
    /// How long get() waits before the test card stands in.
    std::chrono::milliseconds stall {1000};
    /// A camera without a picture for so long is opened anew.
    std::chrono::milliseconds dead {5000};
    /// A camera whose pictures nobody wants for so long is let go until wanted again.
    std::chrono::milliseconds idle {5000};
};

/// Owns a camera and the thread that reads it and keeps the newest picture.
class QD_Capture {
public:
    explicit QD_Capture(std::unique_ptr<QD_Camera> camera, QD_Capture_Times times = {});

    /// Ends the reader, waiting for it SprocThread::KILL_MS at most; one that is
    /// stuck in its device is let go, with its camera.
    ~QD_Capture();
    QD_Capture(const QD_Capture&) = delete;
    QD_Capture& operator=(const QD_Capture&) = delete;

    /// Starts the reader, which opens the camera. Returns 0 or -1.
    int start();

    /// At most so many pictures a second (1 at least). Any thread.
    void set_rate(int fps);

    /// Waits until a picture is due, then for one newer than the last, and
    /// copies it to `out`. At most one second in all; then, and at once while
    /// the camera is known to be missing or stalled, it is the test card. One thread.
    void get(char* out);

private:
    void wait_until_due(QD_Clock::Time latest);

    const QD_Capture_Times times_;
    std::shared_ptr<class QD_Picture_Shelf> shelf_;
    std::shared_ptr<QD_Camera_Thread> reader_;
    QD_Test_Card card_;
    std::atomic<int> fps_ = 5;
    QD_Clock::Time due_;   // of the next picture
    unsigned given_ = 0;   // the number of the last picture that was handed out
    bool stalled_ = false; // the camera is open and gives nothing
};
