// Threads of execution: with a cooperative stop and a bounded end, or left to themselves.
#pragma once

#include "platform/net/wake.h"

#include <atomic>
#include <functional>
#include <memory>
#include <pthread.h>
#include <sys/types.h>

/// What can be started and stopped, and does its work in run().
class Thread {
public:
    virtual ~Thread() = default;
    virtual int start() = 0;
    virtual void stop() = 0;

protected:
    virtual int run() = 0;
};

/// One thread that runs run() until it returns. run() tests `running` and
/// sleeps only in pause(), so that stop() ends it at once.
///
/// start(), stop() and kill() are called by the owner; wake() by any thread.
/// The owner calls kill() before it destroys the object or anything run() uses.
class SprocThread : public Thread {
public:
    /// How long kill() waits for run() to return.
    static constexpr int KILL_MS = 2000;

    /// `name`, at most 15 characters, is what the system calls the thread.
    explicit SprocThread(const char* name = "sproc");
    ~SprocThread() override;
    SprocThread(const SprocThread&) = delete;
    SprocThread& operator=(const SprocThread&) = delete;

    /// Sets `running` and starts the thread, signals blocked in it.
    /// Returns 0, or -1 if it runs already or cannot be had.
    int start() override;

    /// Clears `running` and ends a pause() under way. Does not wait.
    void stop() override;

    /// stop(), then waits for run() to return, at most `milliseconds`.
    /// Returns 0, also when nothing runs. -1 if run() is stuck: it is then left
    /// to itself with a line on standard error, and neither this object nor
    /// what run() uses may be destroyed any more. Never call it with a lock
    /// held that run() takes.
    int kill(int milliseconds = KILL_MS);

    /// Ends a pause() under way, or the next one, early. Any thread.
    void wake() { wake_.raise(); }

    /// The kernel's id of the running thread, 0 before it runs. Any thread.
    pid_t pid() const { return pid_; }

protected:
    /// Sleeps up to `milliseconds`, less if stopped or woken. Called from run().
    void pause(int milliseconds);

    /// Readable once stopped or woken, for run() to wait for beside other descriptors.
    int wake_fd() const { return wake_.get(); }

    std::atomic<int> running = 0;

private:
    struct Ending; // outlives this object where the thread had to be abandoned
    static void* run_callback(void* self);

    const char* const name_;
    std::atomic<pid_t> pid_ = 0;
    QD_Wake wake_;
    std::shared_ptr<Ending> ending_;
    pthread_t thread_ {};
    bool joinable_ = false;
};

/// Runs `work` on a thread that nobody waits for, signals blocked in it. It owns
/// what it uses, or that is kept for the life of the process. Returns 0, or -1 if
/// there can be no thread; then nothing is run. Any thread.
int qd_run_detached(std::function<void()> work);
