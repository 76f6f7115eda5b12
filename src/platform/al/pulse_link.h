// The connection to the PulseAudio server that all ports share.
#pragma once

#include "platform/al/port.h"
#include "platform/base/thread.h"

#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <pulse/pulseaudio.h>
#include <string>
#include <vector>

/// One context and one main loop on a thread of its own, from the first attach() on. attach(),
/// nudge() and set_gain() may be called from any thread and never wait; the
/// rest runs on the main loop's thread. The owner keeps its thread off the loop.
class QD_Pulse_Link {
public:
    /// The one link of this process, made when none is in use.
    static std::shared_ptr<QD_Pulse_Link> shared();

    QD_Pulse_Link() = default;
    ~QD_Pulse_Link();
    QD_Pulse_Link(const QD_Pulse_Link&) = delete;
    QD_Pulse_Link& operator=(const QD_Pulse_Link&) = delete;

    /// Serves the port on the sink or source called `device`, until it is closed.
    void attach(std::shared_ptr<QD_Al_Port> port, const std::string& device) QD_EXCLUDES(mutex_);

    /// Some play port was written, or some port closed.
    void nudge() { wake_.raise(); }

    /// The gains, 0..255, of all streams of one side.
    void set_gain(QD_Al_Port::Side side, int left, int right) QD_EXCLUDES(mutex_);

private:
    struct Gain {
        int left = 0;
        int right = 0;
        long change = 0; // counts the settings; 0: none yet

        pa_cvolume volume() const;
    };
    struct Stream {
        std::shared_ptr<QD_Al_Port> port;
        std::string device;
        pa_stream* stream = nullptr; // null until opened, and once it is lost
        bool running = false;        // the server has accepted it
        bool waiting = false;        // failed: not before the next attempt
        bool fallback = false;       // there is no `device`: the default, until the next server
        long gain_change = 0;        // the setting it has
    };

    class Loop;

    int start_loop() QD_REQUIRES(mutex_);

    // On the main loop's thread:
    void serve() QD_EXCLUDES(mutex_);
    void take_word() QD_EXCLUDES(mutex_);
    void connect();
    void disconnect();
    void serve_stream(Stream& stream);
    void open(Stream& stream);
    void close(Stream& stream);
    void lost(Stream& stream);
    void apply_gain(Stream& stream);
    void play(Stream& stream);
    void capture(Stream& stream);
    void try_again_later();

    static void on_wake(pa_mainloop_api*, pa_io_event*, int, pa_io_event_flags_t, void* self);
    static void on_retry(pa_mainloop_api*, pa_time_event*, const timeval*, void* self);

    QD_Wake wake_;
    QD_Mutex mutex_;
    std::vector<Stream> arrivals_ QD_GUARDED_BY(mutex_);
    Gain new_gains_[2] QD_GUARDED_BY(mutex_);          // by QD_Al_Port::Side
    std::unique_ptr<Loop> loop_ QD_GUARDED_BY(mutex_); // made by the first attach()
    std::atomic<bool> stopping_ = false;

    // The main loop thread's own, once it runs.
    pa_mainloop_api* api_ = nullptr;
    pa_io_event* wake_event_ = nullptr;
    pa_time_event* retry_event_ = nullptr; // set while a new attempt is due
    std::chrono::milliseconds retry_delay_;
    bool told_missing_[2] = {}; // that there is no such device, by side
    pa_context* context_ = nullptr;
    std::list<Stream> streams_; // a list: callbacks know their stream by address
    Gain gains_[2];
};
