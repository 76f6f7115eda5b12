#include "platform/base/create_thread.h"

#include <csignal>
#include <memory>

namespace {

using Work = std::function<void()>;

void* run_work(void* given)
{
    const std::unique_ptr<Work> work(static_cast<Work*>(given));
    (*work)();
    return nullptr;
}

}

int qd_create_thread(pthread_t* thread, void* (*run)(void*), void* argument)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before); // inherited by the new thread
    const int error = pthread_create(thread, nullptr, run, argument);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return error == 0 ? 0 : -1;
}

int qd_run_detached(Work work)
{
    auto given = std::make_unique<Work>(std::move(work));
    pthread_t thread {};
    if (qd_create_thread(&thread, run_work, given.get()) < 0)
        return -1;
    given.release(); // it is the thread's
    pthread_detach(thread);
    return 0;
}
