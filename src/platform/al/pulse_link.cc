#include "platform/al/pulse_link.h"

#include "platform/al/pulse.h"

#include <array>
#include <cstdio>

namespace {

constexpr uint8_t CHANNELS = 2;
constexpr size_t FRAME_BYTES = CHANNELS * sizeof(int16_t);
constexpr pa_sample_spec FORMAT = {PA_SAMPLE_S16NE, QD_AL_RATE, CHANNELS};

// A lost server is looked for soon at first and then less and less often.
constexpr std::chrono::milliseconds FIRST_RETRY {250};
constexpr std::chrono::milliseconds LAST_RETRY {5000};

constexpr uint32_t bytes_of(std::chrono::milliseconds length)
{
    return static_cast<uint32_t>(length.count() * QD_AL_RATE / 1000 * FRAME_BYTES);
}

constexpr uint32_t SERVERS_CHOICE = UINT32_MAX;
constexpr pa_buffer_attr PLAY_BUFFER = {
    .maxlength = bytes_of(std::chrono::milliseconds(200)),
    .tlength = bytes_of(std::chrono::milliseconds(40)),
    .prebuf = FRAME_BYTES, // sounds at once, also after a gap
    .minreq = SERVERS_CHOICE,
    .fragsize = SERVERS_CHOICE,
};
constexpr pa_buffer_attr CAPTURE_BUFFER = {
    .maxlength = bytes_of(std::chrono::milliseconds(200)),
    .tlength = SERVERS_CHOICE,
    .prebuf = SERVERS_CHOICE,
    .minreq = SERVERS_CHOICE,
    .fragsize = bytes_of(std::chrono::milliseconds(20)),
};

void forget(pa_operation* operation)
{
    if (operation != nullptr)
        pa_operation_unref(operation);
}

}

/// The main loop and its thread.
class QD_Pulse_Link::Loop : public SprocThread {
public:
    Loop() : SprocThread("pulse") {}

    pa_mainloop* get() const { return loop_.get(); }

protected:
    int run() override { return pa_mainloop_run(loop_.get(), nullptr); }

private:
    std::unique_ptr<pa_mainloop, void (*)(pa_mainloop*)> loop_ {
        pa_mainloop_new(), pa_mainloop_free};
};

pa_cvolume QD_Pulse_Link::Gain::volume() const
{
    pa_cvolume both;
    pa_cvolume_init(&both);
    both.channels = CHANNELS;
    both.values[0] = qd_pulse_volume(left);
    both.values[1] = qd_pulse_volume(right);
    return both;
}

std::shared_ptr<QD_Pulse_Link> QD_Pulse_Link::shared()
{
    static QD_Mutex mutex;
    static auto* const in_use = new std::weak_ptr<QD_Pulse_Link>; // never destroyed
    QD_Lock hold(mutex);
    std::shared_ptr<QD_Pulse_Link> link = in_use->lock();
    if (!link)
        *in_use = link = std::make_shared<QD_Pulse_Link>();
    return link;
}

QD_Pulse_Link::~QD_Pulse_Link()
{
    if (!loop_)
        return;
    stopping_ = true;
    wake_.raise();
    loop_->kill();
    // From here on this thread is the only one left.
    disconnect();
    if (retry_event_ != nullptr)
        api_->time_free(retry_event_);
    api_->io_free(wake_event_);
}

int QD_Pulse_Link::start_loop()
{
    if (loop_)
        return 0;
    auto loop = std::make_unique<Loop>();
    if (loop->get() == nullptr)
        return -1;
    api_ = pa_mainloop_get_api(loop->get());
    wake_event_ = api_->io_new(api_, wake_.get(), PA_IO_EVENT_INPUT, on_wake, this);
    retry_delay_ = FIRST_RETRY;
    if (loop->start() < 0) {
        api_->io_free(wake_event_);
        return -1;
    }
    loop_ = std::move(loop);
    return 0;
}

void QD_Pulse_Link::attach(std::shared_ptr<QD_Al_Port> port, const std::string& device)
{
    QD_Lock hold(mutex_);
    if (start_loop() < 0)
        return; // the port stays as without a device
    Stream arrival;
    arrival.port = std::move(port);
    arrival.device = device;
    arrivals_.push_back(std::move(arrival));
    wake_.raise();
}

void QD_Pulse_Link::set_gain(QD_Al_Port::Side side, int left, int right)
{
    QD_Lock hold(mutex_);
    Gain& gain = new_gains_[side];
    if (gain.change > 0 && gain.left == left && gain.right == right)
        return;
    gain = {left, right, gain.change + 1};
    wake_.raise();
}

void QD_Pulse_Link::on_wake(pa_mainloop_api*, pa_io_event*, int, pa_io_event_flags_t, void* self)
{
    auto* link = static_cast<QD_Pulse_Link*>(self);
    link->wake_.take();
    if (link->stopping_)
        link->api_->quit(link->api_, 0);
    else
        link->serve();
}

void QD_Pulse_Link::on_retry(pa_mainloop_api* api, pa_time_event* event, const timeval*, void* self)
{
    auto* link = static_cast<QD_Pulse_Link*>(self);
    api->time_free(event);
    link->retry_event_ = nullptr;
    for (Stream& stream : link->streams_)
        stream.waiting = false;
    link->serve();
}

// Everything that may have changed is looked at anew each time: what the other
// threads want, the state of the connection, the state of each stream.
void QD_Pulse_Link::serve()
{
    take_word();
    if ((context_ != nullptr) && !PA_CONTEXT_IS_GOOD(pa_context_get_state(context_))) {
        disconnect();
        try_again_later();
    }
    if ((context_ == nullptr) && !streams_.empty() && (retry_event_ == nullptr))
        connect();
    if ((context_ == nullptr) || pa_context_get_state(context_) != PA_CONTEXT_READY)
        return;
    for (Stream& stream : streams_)
        serve_stream(stream);
}

void QD_Pulse_Link::take_word()
{
    {
        QD_Lock hold(mutex_);
        std::move(arrivals_.begin(), arrivals_.end(), std::back_inserter(streams_));
        arrivals_.clear();
        std::copy(std::begin(new_gains_), std::end(new_gains_), std::begin(gains_));
    }
    std::erase_if(streams_, [this](Stream& stream) {
        if (!stream.port->closed())
            return false;
        close(stream);
        return true;
    });
}

void QD_Pulse_Link::connect()
{
    context_ = pa_context_new(api_, "Quendal");
    if (context_ == nullptr)
        return try_again_later();
    // Never from within the callback: libpulse is in the middle of its work there.
    pa_context_set_state_callback(
        context_, [](pa_context*, void* self) { static_cast<QD_Pulse_Link*>(self)->nudge(); },
        this);
    if (pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        disconnect();
        try_again_later();
    }
}

void QD_Pulse_Link::disconnect()
{
    for (Stream& stream : streams_) {
        close(stream);
        stream.fallback = false;
    }
    if (context_ == nullptr)
        return;
    pa_context_set_state_callback(context_, nullptr, nullptr);
    pa_context_disconnect(context_);
    pa_context_unref(context_);
    context_ = nullptr;
}

void QD_Pulse_Link::try_again_later()
{
    if (retry_event_ != nullptr)
        return;
    timeval when;
    pa_timeval_add(pa_gettimeofday(&when),
        std::chrono::duration_cast<std::chrono::microseconds>(retry_delay_).count());
    retry_event_ = api_->time_new(api_, &when, on_retry, this);
    retry_delay_ = std::min(2 * retry_delay_, LAST_RETRY);
}

void QD_Pulse_Link::serve_stream(Stream& stream)
{
    if (stream.stream == nullptr) {
        if (!stream.waiting)
            open(stream);
        return;
    }
    const pa_stream_state_t state = pa_stream_get_state(stream.stream);
    if (!PA_STREAM_IS_GOOD(state))
        return lost(stream);
    if (state != PA_STREAM_READY)
        return;
    if (!stream.running) {
        stream.running = true;
        retry_delay_ = FIRST_RETRY;
        if (stream.port->side() == QD_Al_Port::PLAY)
            stream.port->drop_stale();
    }
    apply_gain(stream);
    if (stream.port->side() == QD_Al_Port::PLAY)
        play(stream);
}

void QD_Pulse_Link::open(Stream& stream)
{
    const bool plays = stream.port->side() == QD_Al_Port::PLAY;
    const bool named = !stream.device.empty() && !stream.fallback;
    const char* device = named ? stream.device.c_str() : nullptr;
    const Gain& gain = gains_[stream.port->side()];
    const pa_cvolume volume = gain.volume();
    stream.stream = pa_stream_new(context_, plays ? "Conference" : "Microphone", &FORMAT, nullptr);
    if (stream.stream == nullptr)
        return lost(stream);
    pa_stream_set_state_callback(
        stream.stream, [](pa_stream*, void* self) { static_cast<QD_Pulse_Link*>(self)->nudge(); },
        this);

    int result;
    if (plays) {
        // The server asks for more than the queue may hold: nudge() brings the rest.
        pa_stream_set_write_callback(
            stream.stream,
            [](pa_stream*, size_t, void* self) { static_cast<QD_Pulse_Link*>(self)->nudge(); },
            this);
        result = pa_stream_connect_playback(stream.stream, device, &PLAY_BUFFER,
            PA_STREAM_EARLY_REQUESTS, gain.change > 0 ? &volume : nullptr, nullptr);
        stream.gain_change = gain.change;
    } else {
        pa_stream_set_read_callback(
            stream.stream,
            [](pa_stream*, size_t, void* self) {
                auto* link = static_cast<QD_Pulse_Link*>(self);
                for (Stream& each : link->streams_) {
                    if ((each.stream != nullptr) && each.port->side() == QD_Al_Port::CAPTURE)
                        link->capture(each);
                }
            },
            this);
        result = pa_stream_connect_record(
            stream.stream, device, &CAPTURE_BUFFER, PA_STREAM_ADJUST_LATENCY);
    }
    if (result < 0)
        lost(stream);
}

void QD_Pulse_Link::close(Stream& stream)
{
    if (stream.stream == nullptr)
        return;
    pa_stream_set_state_callback(stream.stream, nullptr, nullptr);
    pa_stream_set_write_callback(stream.stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream.stream, nullptr, nullptr);
    pa_stream_disconnect(stream.stream);
    pa_stream_unref(stream.stream);
    stream.stream = nullptr;
    stream.running = false;
    stream.gain_change = 0;
}

void QD_Pulse_Link::lost(Stream& stream)
{
    const bool refused = !stream.running && pa_context_errno(context_) == PA_ERR_NOENTITY;
    close(stream);
    if (refused && !stream.device.empty() && !stream.fallback) {
        const QD_Al_Port::Side side = stream.port->side();
        const bool plays = side == QD_Al_Port::PLAY;
        if (!std::exchange(told_missing_[side], true))
            fprintf(stderr, "%s=pulse:%s: PulseAudio has no such %s, the default is used\n",
                plays ? "QD_SPEAKER" : "QD_MIC", stream.device.c_str(), plays ? "sink" : "source");
        stream.fallback = true;
        return open(stream);
    }
    stream.waiting = true;
    try_again_later();
}

void QD_Pulse_Link::apply_gain(Stream& stream)
{
    const Gain& gain = gains_[stream.port->side()];
    if (stream.gain_change == gain.change)
        return;
    stream.gain_change = gain.change;
    const pa_cvolume volume = gain.volume();
    const uint32_t index = pa_stream_get_index(stream.stream);
    if (stream.port->side() == QD_Al_Port::PLAY)
        forget(pa_context_set_sink_input_volume(context_, index, &volume, nullptr, nullptr));
    else
        forget(pa_context_set_source_output_volume(context_, index, &volume, nullptr, nullptr));
}

void QD_Pulse_Link::play(Stream& stream)
{
    constexpr size_t PIECE = 320;
    std::array<int16_t, PIECE> samples;
    std::array<int16_t, PIECE * CHANNELS> frames;
    for (;;) {
        const size_t room = pa_stream_writable_size(stream.stream);
        if (room == static_cast<size_t>(-1) || room < FRAME_BYTES)
            return;
        const size_t count
            = stream.port->take(std::span(samples).first(std::min(PIECE, room / FRAME_BYTES)));
        if (count == 0)
            return;
        for (size_t i = 0; i < count; ++i)
            frames[2 * i] = frames[2 * i + 1] = samples[i];
        if (pa_stream_write(
                stream.stream, frames.data(), count * FRAME_BYTES, nullptr, 0, PA_SEEK_RELATIVE)
            < 0)
            return;
    }
}

void QD_Pulse_Link::capture(Stream& stream)
{
    std::array<int16_t, 320> samples;
    while (pa_stream_readable_size(stream.stream) > 0) {
        const void* data = nullptr;
        size_t bytes = 0;
        if (pa_stream_peek(stream.stream, &data, &bytes) < 0 || bytes == 0)
            return;
        // No data stands for a hole: time that passed without samples.
        const auto* frame = static_cast<const int16_t*>(data);
        for (size_t left = bytes / FRAME_BYTES; left > 0;) {
            const size_t count = std::min(left, samples.size());
            for (size_t i = 0; i < count; ++i, frame += frame != nullptr ? CHANNELS : 0)
                samples[i] = static_cast<int16_t>(frame != nullptr ? (frame[0] + frame[1]) / 2 : 0);
            stream.port->write(std::span(samples).first(count));
            left -= count;
        }
        pa_stream_drop(stream.stream);
    }
}
