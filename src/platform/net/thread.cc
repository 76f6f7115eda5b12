#include "platform/net/thread.h"

#include <csignal>
#include <cstdio>

namespace {

// Signals are the user interface's affair: the new thread inherits a full mask.
int create(pthread_t* thread, void* (*run)(void*), void* argument)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    const int error = pthread_create(thread, nullptr, run, argument);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return error == 0 ? 0 : -1;
}

using Work = std::function<void()>;

void* run_work(void* given)
{
    const std::unique_ptr<Work> work(static_cast<Work*>(given));
    (*work)();
    return nullptr;
}

}

struct SprocThread::Ending {
    QD_Wake done;
};

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
    ending_ = std::make_shared<Ending>();
    running = 1;
    joinable_ = create(&thread_, run_callback, this) == 0;
    if (!joinable_)
        running = 0;
    return joinable_ ? 0 : -1;
}

void* SprocThread::run_callback(void* self)
{
    auto* thread = static_cast<SprocThread*>(self);
    std::shared_ptr<Ending> ending = thread->ending_;
    thread->pid_ = gettid();
    pthread_setname_np(pthread_self(), thread->name_);
    thread->run();
    ending->done.raise();
    return nullptr;
}

void SprocThread::stop()
{
    running = 0;
    wake_.raise();
}

int SprocThread::kill(int milliseconds)
{
    if (!joinable_)
        return 0;
    stop();
    joinable_ = false;
    if (!ending_->done.wait(milliseconds)) {
        pthread_detach(thread_);
        fprintf(stderr, "SprocThread: thread %d does not end\n", static_cast<int>(pid_.load()));
        return -1;
    }
    pthread_join(thread_, nullptr);
    wake_.take();
    return 0;
}

void SprocThread::pause(int milliseconds)
{
    if (running != 0 && wake_.wait(milliseconds) && running != 0)
        wake_.take();
}

int qd_run_detached(Work work)
{
    auto given = std::make_unique<Work>(std::move(work));
    pthread_t thread {};
    if (create(&thread, run_work, given.get()) < 0)
        return -1;
    given.release(); // it is the thread's
    pthread_detach(thread);
    return 0;
}
