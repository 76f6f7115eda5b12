// The thread that captures, codes and sends pictures.
#pragma once

#include "platform/base/thread.h"

class QD_VideoApp;

/// Calls the application's send_video() until it is stopped.
class QD_VideoCapThread : public SprocThread {
public:
    /// The application outlives the thread's run.
    explicit QD_VideoCapThread(QD_VideoApp* app) : SprocThread("video capture"), app_(app) {}

    /// Sleeps, less if the thread is stopped or woken. For send_video().
    void rest(int milliseconds) { pause(milliseconds); }

protected:
    int run() override;

private:
    QD_VideoApp* const app_;
};
