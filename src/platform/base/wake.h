// A descriptor that one thread raises to end another's wait.
#pragma once

#include "platform/base/fd.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <poll.h>
#include <sys/eventfd.h>

/// An eventfd. raise() may be called from any thread and from a signal handler.
class QD_Wake {
public:
    /// Each raise() counts for one take(): so many raises, so many wakes.
    enum Mode { EACH = EFD_SEMAPHORE, ALL_AT_ONCE = 0 };

    explicit QD_Wake(Mode mode = ALL_AT_ONCE) : fd_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | mode))
    {
    }

    void raise() const
    {
        uint64_t one = 1;
        [[maybe_unused]] ssize_t ignored = ::write(fd_.get(), &one, sizeof one);
    }

    /// Takes one raise (EACH) or all of them. Returns false if there was none. Never waits.
    bool take() const
    {
        uint64_t count = 0;
        return ::read(fd_.get(), &count, sizeof count) == sizeof count;
    }

    /// Waits up to `milliseconds` for a raise, which stays to be taken. Returns
    /// whether there is one. A signal does not shorten the wait.
    bool wait(int milliseconds) const
    {
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
        pollfd waiting {fd_.get(), POLLIN, 0};
        for (;;) {
            const int found = ::poll(&waiting, 1, milliseconds);
            if (found >= 0 || errno != EINTR)
                return found > 0;
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
            milliseconds = static_cast<int>(std::max<long>(left.count(), 0));
        }
    }

    /// For polling beside other descriptors.
    int get() const { return fd_.get(); }

private:
    QD_Fd fd_;
};
