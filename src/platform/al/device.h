// Audio devices: what stands behind the ports, and the tables to choose from.
#pragma once

#include "platform/al/port.h"

#include <memory>
#include <span>
#include <string>

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

/// A row of the table of microphones or loudspeakers.
struct QD_Al_Choice {
    const char* name;
    const char* usage; // how it is written in QD_MIC or QD_SPEAKER

    /// Makes the device from what stands behind the colon, empty if nothing does.
    /// Returns null and says in `why` what is wrong with it.
    std::shared_ptr<QD_Al_Device> (*make)(const std::string& argument, std::string& why);
};

/// The devices for one side; the first is what is used unless told otherwise.
std::span<const QD_Al_Choice> qd_al_choices(QD_Al_Port::Side side);

/// Makes the device that the text of QD_MIC or QD_SPEAKER asks for ("NAME" or
/// "NAME:ARGUMENT"); null and empty stand for the default. A text that names
/// none is told in one line on standard error, and gives the default.
std::shared_ptr<QD_Al_Device> qd_make_al_device(QD_Al_Port::Side side, const char* text);
