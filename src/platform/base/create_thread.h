// New threads, with all signals blocked: those are the first thread's affair.
#pragma once

#include <functional>
#include <pthread.h>

/// As pthread_create(). Returns 0, or -1 if there can be no thread.
int qd_create_thread(pthread_t* thread, void* (*run)(void*), void* argument);

/// Runs `work` on a thread that is not waited for. It owns what it uses, or that
/// is kept for the life of the process. Returns 0, or -1 if there can be no
/// thread; then nothing is run. Any thread.
int qd_run_detached(std::function<void()> work);
