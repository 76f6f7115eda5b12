#include "platform/base/thread.h"

#include "platform/base/create_thread.h"
#include "platform/base/process_end.h"

#include <cstdio>
#include <cstdlib>

SprocThread::SprocThread(const char* name) : name_(name) {}

SprocThread::~SprocThread()
{
    if (joinable_)
        kill();
}

int SprocThread::start()
{
    if (joinable_)
        return -1;
    running = 1;
    self_ = weak_from_this().lock(); // null if the owner does not share the object
    joinable_ = qd_create_thread(&thread_, run_callback, this) == 0;
    if (!joinable_) {
        running = 0;
        self_.reset();
    }
    return joinable_ ? 0 : -1;
}

void* SprocThread::run_callback(void* given)
{
    auto* thread = static_cast<SprocThread*>(given);
    const std::shared_ptr<SprocThread> self = std::move(thread->self_);
    thread->pid_ = gettid();
    pthread_setname_np(pthread_self(), thread->name_);
    thread->run();
    thread->ended_.raise(); // not another look at the object, unless `self` holds it
    return nullptr;
}

void SprocThread::stop()
{
    running = 0;
    wake_.raise();
}

// In slices: a process that is stopped and goes on later finds the one slice
// passed that it was in, while its threads have had no time to end.
bool SprocThread::wait_for_end(int milliseconds)
{
    constexpr int SLICE_MS = 100;
    for (; milliseconds > SLICE_MS; milliseconds -= SLICE_MS)
        if (ended_.wait(SLICE_MS))
            return true;
    return ended_.wait(milliseconds);
}

int SprocThread::let_go(int milliseconds)
{
    if (!joinable_)
        return 0;
    stop();
    joinable_ = false;
    if (!wait_for_end(milliseconds)) {
        pthread_detach(thread_);
        fprintf(stderr, "SprocThread: thread %d does not end\n", static_cast<int>(pid_.load()));
        return -1;
    }
    pthread_join(thread_, nullptr);
    ended_.take();
    wake_.take();
    return 0;
}

int SprocThread::kill(int milliseconds)
{
    if (let_go(milliseconds) < 0)
        qd_end_process(EXIT_SUCCESS);
    return 0;
}

void SprocThread::pause(int milliseconds)
{
    if (running != 0 && wake_.wait(milliseconds) && running != 0)
        wake_.take();
}
