// The thread that receives one medium's datagrams.
#pragma once

#include "platform/net/thread.h"

class QD_Application;

/// Reads every datagram whole and hands it, split into header and payload, to
/// the application. It keeps nothing, orders nothing, checks nothing.
class QD_AppReadThread : public SprocThread {
public:
    /// The largest datagram; a larger one is cut.
    static constexpr int MAX_DATAGRAM = 65000;
    /// How long it may take to notice a stop.
    static constexpr int WAIT_MS = 10;

    /// The application outlives the thread's run.
    explicit QD_AppReadThread(QD_Application* app) : SprocThread("receive"), app_(app) {}

    /// Hands over one datagram if one comes within WAIT_MS. Returns 0, -1 if
    /// receiving failed. The receive thread; without one, whoever wants a datagram handled.
    int receive(int sock);

protected:
    /// Returns 0 when stopped, -1 when receiving failed.
    int run() override;

private:
    QD_Application* const app_;
};
