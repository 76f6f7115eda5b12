#include "platform/al/port.h"

namespace {

/// The longest frame that read() waits for in one go.
constexpr size_t FRAME = 800;

/// Samples written longer ago than this are no longer worth playing.
constexpr std::chrono::milliseconds STALE {200};

std::chrono::microseconds length_of(size_t samples)
{
    return std::chrono::microseconds(samples * 1'000'000 / QD_AL_RATE);
}

}

QD_Al_Port::QD_Al_Port(Side side, size_t queue_size, const QD_Clock& clock) :
    side_(side),
    clock_(clock),
    queue_(queue_size)
{
    if (side == CAPTURE)
        arrived_.emplace();
}

void QD_Al_Port::write(std::span<const int16_t> samples)
{
    const QD_Clock::Time now = clock_.now();
    QD_Lock hold(mutex_);
    if (queue_.add(samples) > 0)
        overrun_ = true;
    written_ = now;
    stopped_ = false;
    if (wanted_ > 0 && queue_.size() >= wanted_) {
        wanted_ = 0;
        arrived_->raise();
    }
}

size_t QD_Al_Port::take(std::span<int16_t> out)
{
    QD_Lock hold(mutex_);
    return queue_.take(out);
}

void QD_Al_Port::drop_stale()
{
    const QD_Clock::Time now = clock_.now();
    QD_Lock hold(mutex_);
    queue_.keep_newest(now - written_ > STALE ? 0 : FRAME);
}

void QD_Al_Port::read(std::span<int16_t> out)
{
    size_t capacity = 0;
    {
        QD_Lock hold(mutex_);
        capacity = queue_.capacity();
        if (overrun_)
            queue_.keep_newest(0);
        overrun_ = false;
    }
    while (!out.empty()) {
        const size_t piece = std::min({out.size(), FRAME, capacity});
        read_piece(out.first(piece));
        out = out.subspan(piece);
    }
}

void QD_Al_Port::read_piece(std::span<int16_t> out)
{
    const auto length = length_of(out.size());
    const QD_Clock::Time begin = clock_.now();
    if (begin - due_ > length)
        due_ = begin; // the reader was away: nothing is to be made up for
    due_ += length;

    size_t got = 0;
    for (;;) {
        const QD_Clock::Time now = clock_.now();
        QD_Clock::Time limit;
        {
            QD_Lock hold(mutex_);
            // The device may have come back while this waited: it then has its grace.
            limit = stopped_ ? due_ : due_ + GRACE;
            const bool complete = queue_.size() >= out.size();
            if (complete || now >= limit) {
                got = queue_.take(out);
                wanted_ = 0;
                stopped_ = stopped_ || !complete;
                if (complete)
                    due_ = now; // the device's pace is the one to follow
                break;
            }
            wanted_ = out.size();
        }
        if (clock_.wait(*arrived_, limit))
            arrived_->take();
    }
    std::fill(out.begin() + static_cast<ptrdiff_t>(got), out.end(), int16_t {0});
}
