#include "platform/al/al.h"

#include "platform/al/device.h"

#include <algorithm>
#include <cstdlib>
#include <memory>

struct QD_Al_Config {
    size_t queue_size = 1600;
    long stream = 0;
};

struct QD_Al_Handle {
    std::shared_ptr<QD_Al_Device> device;
    std::shared_ptr<QD_Al_Port> port;
};

namespace {

constexpr long MAX_QUEUE = 65536;
constexpr int FULL = 255;

/// The two devices in use and their gains, from first use to shutdown.
class Devices {
public:
    std::shared_ptr<QD_Al_Device> get(QD_Al_Port::Side side) QD_EXCLUDES(mutex_)
    {
        QD_Lock hold(mutex_);
        if (!device_[side])
            device_[side] = qd_make_al_device(
                side, std::getenv(side == QD_Al_Port::CAPTURE ? "QD_MIC" : "QD_SPEAKER"));
        if (gain_[side].set)
            device_[side]->set_gain(gain_[side].left, gain_[side].right);
        return device_[side];
    }

    int set(const long* pairs, long length) QD_EXCLUDES(mutex_)
    {
        QD_Lock hold(mutex_);
        Gain wanted[2] = {gain_[0], gain_[1]};
        for (long i = 0; i < length; i += 2) {
            if (pairs[i] == AL_OUTPUT_RATE || pairs[i] == AL_INPUT_RATE) {
                if (pairs[i + 1] != QD_AL_RATE)
                    return -1;
                continue;
            }
            const Place place = find(wanted, pairs[i]);
            if (place.gain == nullptr)
                return -1;
            const int value = static_cast<int>(std::clamp(pairs[i + 1], 0L, long {FULL}));
            *place.gain = place.attenuates ? FULL - value : value;
            wanted[place.side].set = true;
        }
        for (const auto side : {QD_Al_Port::PLAY, QD_Al_Port::CAPTURE}) {
            gain_[side] = wanted[side];
            if (device_[side] && wanted[side].set)
                device_[side]->set_gain(wanted[side].left, wanted[side].right);
        }
        return 0;
    }

    int get(long* pairs, long length) QD_EXCLUDES(mutex_)
    {
        QD_Lock hold(mutex_);
        for (long i = 0; i < length; i += 2) {
            if (pairs[i] != AL_OUTPUT_RATE && pairs[i] != AL_INPUT_RATE
                && (find(gain_, pairs[i]).gain == nullptr))
                return -1;
        }
        for (long i = 0; i < length; i += 2) {
            const Place place = find(gain_, pairs[i]);
            if (place.gain == nullptr)
                pairs[i + 1] = QD_AL_RATE;
            else
                pairs[i + 1] = place.attenuates ? FULL - *place.gain : *place.gain;
        }
        return 0;
    }

    void shutdown() QD_EXCLUDES(mutex_)
    {
        QD_Lock hold(mutex_);
        device_[0] = device_[1] = nullptr;
        gain_[0] = gain_[1] = {};
    }

private:
    struct Gain {
        int left = FULL;
        int right = FULL;
        bool set = false; // by the program: until then the device's own holds
    };
    struct Place {
        int* gain; // null if the parameter is no gain
        QD_Al_Port::Side side;
        bool attenuates;
    };

    static Place find(Gain (&gains)[2], long parameter)
    {
        Gain& play = gains[QD_Al_Port::PLAY];
        Gain& capture = gains[QD_Al_Port::CAPTURE];
        switch (parameter) {
        case AL_LEFT_SPEAKER_GAIN:
            return {&play.left, QD_Al_Port::PLAY, false};
        case AL_RIGHT_SPEAKER_GAIN:
            return {&play.right, QD_Al_Port::PLAY, false};
        case AL_LEFT_INPUT_ATTEN:
            return {&capture.left, QD_Al_Port::CAPTURE, true};
        case AL_RIGHT_INPUT_ATTEN:
            return {&capture.right, QD_Al_Port::CAPTURE, true};
        default:
            return {nullptr, QD_Al_Port::PLAY, false};
        }
    }

    QD_Mutex mutex_;
    std::shared_ptr<QD_Al_Device> device_[2] QD_GUARDED_BY(mutex_); // by side
    Gain gain_[2] QD_GUARDED_BY(mutex_);
};

Devices& devices()
{
    // Never destroyed: a process that loses its framework or its display ends with threads in them.
    static auto* const both = new Devices;
    return *both;
}

bool serves(ALport port, QD_Al_Port::Side side)
{
    return (port != nullptr) && port->port->side() == side;
}

bool well_formed(long device, const long* pairs, long length)
{
    return device == AL_DEFAULT_DEVICE && (pairs != nullptr) && length >= 0 && length % 2 == 0;
}

}

ALconfig ALnewconfig() { return new QD_Al_Config; }

int ALfreeconfig(ALconfig config)
{
    delete config;
    return config != nullptr ? 0 : -1;
}

int ALsetchannels(ALconfig config, long channels)
{
    return (config != nullptr) && channels == 1 ? 0 : -1;
}

int ALsetqueuesize(ALconfig config, long samples)
{
    if ((config == nullptr) || samples < 1 || samples > MAX_QUEUE)
        return -1;
    config->queue_size = static_cast<size_t>(samples);
    return 0;
}

int ALsetwidth(ALconfig config, long bytes_a_sample)
{
    return (config != nullptr) && bytes_a_sample == sizeof(int16_t) ? 0 : -1;
}

int qd_al_set_stream(ALconfig config, long number)
{
    if ((config == nullptr) || number < 0)
        return -1;
    config->stream = number;
    return 0;
}

ALport ALopenport(const char* /*name*/, const char* direction, ALconfig config)
{
    const std::string text = direction != nullptr ? direction : "";
    if ((config == nullptr) || (text != "r" && text != "w"))
        return nullptr;
    const auto side = text == "r" ? QD_Al_Port::CAPTURE : QD_Al_Port::PLAY;
    ALport handle = new QD_Al_Handle {
        devices().get(side), std::make_shared<QD_Al_Port>(side, config->queue_size)};
    handle->port->set_stream(config->stream);
    handle->device->attach(handle->port);
    return handle;
}

int ALcloseport(ALport port)
{
    if (port == nullptr)
        return -1;
    port->port->close();
    port->device->nudge();
    delete port;
    return 0;
}

int ALreadsamps(ALport port, int16_t* samples, long count)
{
    if (!serves(port, QD_Al_Port::CAPTURE) || count < 0)
        return -1;
    port->port->read({samples, static_cast<size_t>(count)});
    return 0;
}

int ALwritesamps(ALport port, const int16_t* samples, long count)
{
    if (!serves(port, QD_Al_Port::PLAY) || count < 0)
        return -1;
    port->port->write({samples, static_cast<size_t>(count)});
    port->device->nudge();
    return 0;
}

int ALsetparams(long device, const long* pairs, long length)
{
    return well_formed(device, pairs, length) ? devices().set(pairs, length) : -1;
}

int ALgetparams(long device, long* pairs, long length)
{
    return well_formed(device, pairs, length) ? devices().get(pairs, length) : -1;
}

void qd_al_shutdown() { devices().shutdown(); }
