// A counting semaphore (POSIX, unnamed, within the process) and its scoped hold.
#pragma once

#include <semaphore.h>

/// Any thread may wait and post. Not recursive when used as a lock.
class QD_Semaphore {
public:
    explicit QD_Semaphore(unsigned count) { sem_init(&sem_, 0, count); }
    ~QD_Semaphore() { sem_destroy(&sem_); }
    QD_Semaphore(const QD_Semaphore&) = delete;
    QD_Semaphore& operator=(const QD_Semaphore&) = delete;

    /// Takes one from the count, waiting while it is 0. A signal does not end the wait.
    void wait()
    {
        while (sem_wait(&sem_) != 0) {}
    }
    void post() { sem_post(&sem_); }

private:
    sem_t sem_;
};

/// Waits on construction and posts on destruction, for semaphores used as locks.
class QD_Sem_Hold {
public:
    explicit QD_Sem_Hold(QD_Semaphore& sem) : sem_(sem) { sem_.wait(); }
    ~QD_Sem_Hold() { sem_.post(); }
    QD_Sem_Hold(const QD_Sem_Hold&) = delete;
    QD_Sem_Hold& operator=(const QD_Sem_Hold&) = delete;

private:
    QD_Semaphore& sem_;
};
