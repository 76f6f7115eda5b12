// The microphone and the loudspeaker of a PulseAudio server (PipeWire serves it, too).
//
// Both share one connection and one main loop thread, the only thread that
// calls libpulse: all others leave word and raise the loop's wake-up. Each port
// is one stream, mixed by the server. The connection is made in the background
// at the first port and made again whenever the server or a stream goes; as
// long as there is none, ports behave as without a device: what is written is
// gone, what is read is silence at the pace of the clock.
//
// Gains are the volumes of our own streams, never those of the sound card: the
// user's mixer and the program's dials do not fight. They are sent when a
// stream opens and when the program changes them, so that what the user does to
// our streams elsewhere stays until then; before the program sets any, the
// server's own (remembered) volume holds. Streams have two channels with the
// same samples, since left and right have a gain each.
#pragma once

#include "platform/al/device.h"

#include <cstdint>
#include <memory>
#include <string>

/// `argument` names the source or sink, empty for the server's default one. If
/// the server has none of that name, a line says so and the default is used.
std::shared_ptr<QD_Al_Device> qd_make_pulse_mic(const std::string& argument, std::string& why);
std::shared_ptr<QD_Al_Device> qd_make_pulse_speaker(const std::string& argument, std::string& why);

/// A gain of 0..255 as a PulseAudio volume.
constexpr uint32_t qd_pulse_volume(int gain)
{
    return (static_cast<uint32_t>(gain) * 65536 + 127) / 255;
}
