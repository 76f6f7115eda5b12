// A mutex the compiler can reason about (clang checks the notes, gcc ignores them).
#pragma once

#include <mutex>

#if defined(__clang__)
#define QD_THREAD_NOTE(x) __attribute__((x))
#else
#define QD_THREAD_NOTE(x)
#endif
#define QD_GUARDED_BY(m) QD_THREAD_NOTE(guarded_by(m))
#define QD_REQUIRES(m) QD_THREAD_NOTE(requires_capability(m))
#define QD_EXCLUDES(m) QD_THREAD_NOTE(locks_excluded(m))

class QD_THREAD_NOTE(capability("mutex")) QD_Mutex {
public:
    void lock() QD_THREAD_NOTE(acquire_capability()) { mutex_.lock(); }
    void unlock() QD_THREAD_NOTE(release_capability()) { mutex_.unlock(); }

private:
    std::mutex mutex_;
};

/// Holds a mutex for the length of a block.
class QD_THREAD_NOTE(scoped_lockable) QD_Lock {
public:
    explicit QD_Lock(QD_Mutex& m) QD_THREAD_NOTE(acquire_capability(m)) : mutex_(m)
    {
        mutex_.lock();
    }
    ~QD_Lock() QD_THREAD_NOTE(release_capability()) { mutex_.unlock(); }
    QD_Lock(const QD_Lock&) = delete;
    QD_Lock& operator=(const QD_Lock&) = delete;

private:
    QD_Mutex& mutex_;
};
