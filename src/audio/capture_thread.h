// The thread that captures, codes and sends sound.
#pragma once

#include "platform/base/thread.h"

class QD_AudioApp;

/// Calls the application's send_audio() until it is stopped.
class QD_AudioCapThread : public SprocThread {
public:
    /// The application outlives the thread's run.
    explicit QD_AudioCapThread(QD_AudioApp* app) : SprocThread("audio capture"), app_(app) {}

    /// Sleeps, less if the thread is stopped or woken. For send_audio().
    void rest(int milliseconds) { pause(milliseconds); }

protected:
    int run() override;

private:
    QD_AudioApp* const app_;
};
