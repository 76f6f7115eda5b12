#include "platform/net/thread.h"

#include <csignal>
#include <cstdio>

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

    // Signals are the user interface's affair: the new thread inherits a full mask.
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before);
    joinable_ = pthread_create(&thread_, nullptr, run_callback, this) == 0;
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
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
