// Threads of execution with a cooperative stop and a bounded end.
#pragma once

#include "platform/base/wake.h"

#include <atomic>
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
/// start(), stop(), kill() and let_go() are called by the owner; wake() by any
/// thread. The owner calls kill() before it destroys the object or anything
/// run() uses; or holds the object by a std::shared_ptr, as run() then does
/// too, lets run() use nothing that the object does not own, and calls let_go().
class SprocThread : public Thread, public std::enable_shared_from_this<SprocThread> {
public:
    /// How long kill() and let_go() wait for run() to return. Time in which the
    /// whole process is stopped does not count.
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

    /// stop(), then waits for run() to return and joins the thread. Returns 0,
    /// also when nothing runs. If run() does not return in time, nothing that it
    /// uses can be destroyed any more: the process ends there and then, with a
    /// line on standard error and status 0 (see qd_end_process). Never call it
    /// with a lock held that run() takes.
    int kill(int milliseconds = KILL_MS);

    /// The same for a thread that a device may hold up, of an object held by a
    /// std::shared_ptr: if run() does not return in time, a line says so and the
    /// thread keeps the object until it does. Returns 0, or -1 in that case; the
    /// owner drops its pointer in any case.
    int let_go(int milliseconds = KILL_MS);

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
    static void* run_callback(void* self);
    bool wait_for_end(int milliseconds);

    const char* const name_;
    std::atomic<pid_t> pid_ = 0;
    QD_Wake wake_;
    QD_Wake ended_;
    std::shared_ptr<SprocThread> self_; // set by start(), the thread's from then on
    pthread_t thread_ {};
    bool joinable_ = false;
};
