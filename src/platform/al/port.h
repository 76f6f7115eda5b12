// An audio port: the queue between one thread of the program and its device.
#pragma once

#include "platform/al/sample_queue.h"
#include "platform/base/clock.h"
#include "platform/base/mutex.h"
#include "platform/base/wake.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <span>

/// What all devices run at, in samples a second.
constexpr int QD_AL_RATE = 8000;

/// Samples are mono, 16 bits signed, host byte order.
///
/// The program owns a port together with its device: a play port is written by
/// the program and emptied by the device with take(); a capture port is written
/// by the device and emptied by the program with read(). No operation holds a
/// lock while it waits, and only read() waits at all.
class QD_Al_Port {
public:
    enum Side { PLAY, CAPTURE };

    /// How much longer than its own length a frame may take before the device
    /// counts as stopped.
    static constexpr std::chrono::milliseconds GRACE {50};

    /// `queue_size` is in samples, at least 1.
    QD_Al_Port(Side side, size_t queue_size, const QD_Clock& clock = QD_Clock::real());

    Side side() const { return side_; }

    /// The stream it carries on, 0 for none; see qd_al_set_stream(). Set before a device has it.
    void set_stream(long number) { stream_ = number; }
    long stream() const { return stream_; }

    /// Adds samples; where the queue has no room, the oldest go.
    void write(std::span<const int16_t> samples) QD_EXCLUDES(mutex_);

    /// Fills the front of `out` with what there is. Returns the number of samples.
    size_t take(std::span<int16_t> out) QD_EXCLUDES(mutex_);

    /// Fills `out` at the pace of the device. A frame that does not arrive
    /// within its own length and GRACE is filled up with silence; from then on
    /// silence comes at the pace of the clock until the device delivers again.
    /// If samples were lost because nobody read, it starts from those that
    /// arrive from now on. One thread, CAPTURE only.
    void read(std::span<int16_t> out) QD_EXCLUDES(mutex_);

    /// For a device that begins to play: lets go of what is too old to be
    /// played now, so that waiting for the device leaves no lasting delay.
    void drop_stale() QD_EXCLUDES(mutex_);

    /// Tells the device that the program has done with the port.
    void close() { closed_ = true; }
    bool closed() const { return closed_; }

private:
    void read_piece(std::span<int16_t> out) QD_EXCLUDES(mutex_);

    const Side side_;
    long stream_ = 0;
    const QD_Clock& clock_;
    std::atomic<bool> closed_ = false;

    QD_Mutex mutex_;
    QD_Sample_Queue queue_ QD_GUARDED_BY(mutex_);
    QD_Clock::Time written_ QD_GUARDED_BY(mutex_) {}; // the last write()
    size_t wanted_ QD_GUARDED_BY(mutex_) = 0;         // samples a read() waits for
    bool overrun_ QD_GUARDED_BY(mutex_) = false;      // samples went unread
    bool stopped_ QD_GUARDED_BY(mutex_) = true;       // the device is behind its time

    std::optional<QD_Wake> arrived_; // a descriptor that only capture ports need
    QD_Clock::Time due_ {};          // when the last frame was complete; the reader's own
};
