// A bounded queue of samples that makes room by letting go of the oldest.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

/// A ring of 16-bit samples. No lock: the owner keeps to one thread at a time.
class QD_Sample_Queue {
public:
    /// `capacity` is at least 1; nothing is allocated later.
    explicit QD_Sample_Queue(size_t capacity) : ring_(capacity) {}

    size_t capacity() const { return ring_.size(); }
    size_t size() const { return size_; }

    /// Adds the samples behind those held. Returns how many of the oldest, held
    /// or added, had to go.
    size_t add(std::span<const int16_t> samples)
    {
        const size_t too_many = samples.size() - std::min(samples.size(), capacity());
        samples = samples.subspan(too_many);
        const size_t room = capacity() - size_;
        const size_t pushed_out = samples.size() - std::min(samples.size(), room);
        drop(pushed_out);

        const size_t at = (first_ + size_) % capacity();
        const size_t before_end = std::min(samples.size(), capacity() - at);
        std::copy_n(samples.begin(), before_end, ring_.begin() + static_cast<ptrdiff_t>(at));
        std::copy(
            samples.begin() + static_cast<ptrdiff_t>(before_end), samples.end(), ring_.begin());
        size_ += samples.size();
        return too_many + pushed_out;
    }

    /// Moves the oldest samples to the front of `out`. Returns how many.
    size_t take(std::span<int16_t> out)
    {
        const size_t count = std::min(out.size(), size_);
        const size_t before_end = std::min(count, capacity() - first_);
        std::copy_n(ring_.begin() + static_cast<ptrdiff_t>(first_), before_end, out.begin());
        std::copy_n(
            ring_.begin(), count - before_end, out.begin() + static_cast<ptrdiff_t>(before_end));
        drop(count);
        return count;
    }

    /// Lets go of all but the newest `count`.
    void keep_newest(size_t count) { drop(size_ - std::min(size_, count)); }

private:
    void drop(size_t count)
    {
        first_ = (first_ + count) % capacity();
        size_ -= count;
    }

    std::vector<int16_t> ring_;
    size_t first_ = 0;
    size_t size_ = 0;
};
