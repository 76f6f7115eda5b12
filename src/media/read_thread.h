// The thread that receives one medium's datagrams.
#pragma once

#include "platform/base/thread.h"
#include "signalling/roster.h"

#include <memory>

class QD_Application;

/// Reads every datagram whole and hands those of members, split into header and
/// payload, to the application. It keeps nothing, orders nothing, decodes nothing.
class QD_AppReadThread : public SprocThread {
public:
    /// The largest datagram; a larger one is cut.
    static constexpr int MAX_DATAGRAM = 65000;
    /// As many datagrams at most are fetched in one system call.
    static constexpr int BATCH = 16;

    /// The application outlives the thread's run.
    explicit QD_AppReadThread(QD_Application* app);
    ~QD_AppReadThread() override;

    /// Hands over the datagrams that are there, BATCH at the most. Returns 0, -1
    /// if receiving failed. The receive thread; without one, any single thread.
    int receive(int sock);

protected:
    /// Returns 0 when stopped, -1 when receiving failed.
    int run() override;

private:
    struct Buffers;

    void hand_over(char* datagram, int length, const QD_Roster& roster);

    QD_Application* const app_;
    std::unique_ptr<Buffers> buffers_; // the receive thread's
};
