// A file descriptor with one owner.
#pragma once

#include <unistd.h>
#include <utility>

/// Owns one file descriptor; closes it on destruction. -1 stands for none.
class QD_Fd {
public:
    explicit QD_Fd(int fd = -1) : fd_(fd) {}
    ~QD_Fd() { reset(); }
    QD_Fd(QD_Fd&& other) noexcept : fd_(other.release()) {}
    QD_Fd& operator=(QD_Fd&& other) noexcept
    {
        reset(other.release());
        return *this;
    }

    int get() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }

    /// Closes what is held and takes over `fd`.
    void reset(int fd = -1)
    {
        int old = std::exchange(fd_, fd);
        if (old >= 0 && old != fd)
            ::close(old);
    }

    /// Gives the descriptor up without closing it.
    int release() { return std::exchange(fd_, -1); }

private:
    int fd_;
};
