// Audio devices: what stands behind the ports, and the choice of one.
#pragma once

#include "platform/al/port.h"

#include <memory>

/// The microphone or the loudspeaker, whatever it is. It moves the samples of
/// its ports on threads of its own, and lives until its last port is closed
/// and its owner lets go of it. Every operation may be called from any thread;
/// none waits for the device.
class QD_Al_Device {
public:
    virtual ~QD_Al_Device() = default;

    /// Serves the port until it is closed.
    virtual void attach(std::shared_ptr<QD_Al_Port> port) = 0;

    /// Some port was written by the program, or closed.
    virtual void nudge() {}

    /// Sets the gains of all ports, now and later, 0..255 each.
    virtual void set_gain(int /*left*/, int /*right*/) {}
};

/// Makes the device that the text of QD_MIC or QD_SPEAKER asks for; see qd_choose().
/// The default is PulseAudio. Never null.
std::shared_ptr<QD_Al_Device> qd_make_al_device(QD_Al_Port::Side side, const char* text);
