#include "platform/base/output.h"

#include "platform/base/create_thread.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

constexpr std::chrono::seconds FLUSH_BOUND {1};

/// One descriptor's queue and the thread that empties it. Never destroyed, since
/// that thread may be in the middle of a write for as long as the process lives.
class Queue {
public:
    explicit Queue(int fd) : fd_(fd) {}

    /// All or nothing is taken, so that lines stay whole.
    void add(const char* text, size_t size)
    {
        const std::lock_guard hold(mutex_);
        if (!started_)
            started_ = qd_run_detached([this] { empty(); }) == 0;
        if (dropped_ > 0 || waiting_.size() + size > QD_OUTPUT_QUEUE)
            dropped_ += size;
        else
            waiting_.append(text, size);
        idle_ = false;
        changed_.notify_all();
    }

    void flush(std::chrono::steady_clock::time_point end)
    {
        std::unique_lock hold(mutex_);
        changed_.wait_until(hold, end, [this] { return !started_ || idle_; });
    }

private:
    [[noreturn]] void empty()
    {
        std::unique_lock hold(mutex_);
        for (;;) {
            const std::string text = next();
            idle_ = text.empty();
            if (idle_) {
                changed_.notify_all();
                changed_.wait(hold);
                continue;
            }
            hold.unlock();
            write(text);
            hold.lock();
        }
    }

    // What to write next; under mutex_.
    std::string next()
    {
        std::string text = std::exchange(waiting_, {});
        if (text.empty() && dropped_ > 0)
            text = "[" + std::to_string(std::exchange(dropped_, 0))
                + " bytes were not read in time]\n";
        return text;
    }

    // Until all is written or the reader has gone: then it is lost, as with any file.
    void write(const std::string& text) const
    {
        for (size_t done = 0; done < text.size();) {
            const ssize_t n = ::write(fd_, text.data() + done, text.size() - done);
            pollfd room {fd_, POLLOUT, 0};
            if (n >= 0)
                done += static_cast<size_t>(n);
            else if (errno == EAGAIN) // who shares it has made it so
                ::poll(&room, 1, -1);
            else if (errno != EINTR)
                return;
        }
    }

    const int fd_;
    std::mutex mutex_; // a bare one: the condition needs it
    std::condition_variable changed_;
    // Guarded by mutex_:
    std::string waiting_;
    size_t dropped_ = 0; // bytes since the queue was full
    bool started_ = false;
    bool idle_ = true; // all is written
};

Queue* out = nullptr; // set once, before there are other threads
Queue* err = nullptr;

ssize_t put(void* queue, const char* text, size_t size)
{
    static_cast<Queue*>(queue)->add(text, size);
    return static_cast<ssize_t>(size);
}

FILE* open_queue(Queue* queue, int buffering)
{
    FILE* file = fopencookie(queue, "w", {nullptr, put, nullptr, nullptr});
    if (file != nullptr)
        setvbuf(file, nullptr, buffering, 0);
    return file;
}

bool same_file(int a, int b)
{
    struct stat of_a {};
    struct stat of_b {};
    return fstat(a, &of_a) == 0 && fstat(b, &of_b) == 0 && of_a.st_dev == of_b.st_dev
        && of_a.st_ino == of_b.st_ino;
}

}

void qd_queue_output()
{
    auto* const first = new Queue(STDOUT_FILENO);
    // One order for both where they are read together.
    auto* const second = same_file(STDOUT_FILENO, STDERR_FILENO) ? first : new Queue(STDERR_FILENO);
    FILE* const lines = open_queue(first, _IOLBF); // a log tells at once what has happened
    FILE* const complaints = open_queue(second, _IONBF);
    if (lines == nullptr || complaints == nullptr)
        return; // no memory: the plain ones serve
    stdout = lines;
    stderr = complaints;
    out = first;
    err = second;
    atexit(qd_flush_output);
}

void qd_flush_output()
{
    fflush(stdout);
    const auto end = std::chrono::steady_clock::now() + FLUSH_BOUND;
    for (Queue* queue : {out, err})
        if (queue != nullptr)
            queue->flush(end);
}
