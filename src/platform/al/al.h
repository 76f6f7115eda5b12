// The audio library: ports to the microphone and the loudspeaker, and their settings.
//
// Which devices stand behind it say QD_MIC and QD_SPEAKER (see device.h), read
// at the first call. Samples are mono, 16 bits signed, host byte order, 8000 a
// second. A port belongs to one thread at a time; everything else may be called
// from any thread. No call waits for a device or a server, save ALreadsamps,
// which is bounded.
#pragma once

#include <cstdint>

struct QD_Al_Config;
struct QD_Al_Handle;
using ALconfig = QD_Al_Config*;
using ALport = QD_Al_Handle*;

/// The device all parameters belong to: the microphone and loudspeaker in use.
constexpr long AL_DEFAULT_DEVICE = 1;

/// Parameters of the device. Gains and attenuations are 0..255, others are cut
/// to that range; an attenuation of 255 is silence. They are what was set last
/// through here (no attenuation and full gain at first), whatever the device.
enum QD_Al_Parameter : long {
    AL_OUTPUT_RATE = 1, // samples a second: 8000, no other is accepted
    AL_INPUT_RATE,
    AL_LEFT_SPEAKER_GAIN,
    AL_RIGHT_SPEAKER_GAIN,
    AL_LEFT_INPUT_ATTEN,
    AL_RIGHT_INPUT_ATTEN,
};

/// A configuration: mono, 2 bytes a sample, a queue of 1600 samples. The caller
/// releases it, and may do so while ports opened with it are in use.
ALconfig ALnewconfig();
int ALfreeconfig(ALconfig config);

// 0, or -1 with the configuration unchanged for a null one or a value that no
// port can have.
int ALsetchannels(ALconfig config, long channels);    // 1
int ALsetqueuesize(ALconfig config, long samples);    // 1..65536
int ALsetwidth(ALconfig config, long bytes_a_sample); // 2

/// Ports that are opened one after the other with the same number above 0 are
/// one stream: a device that records keeps it in one place. 0, the default, is
/// no stream. Returns 0, or -1 as above.
int qd_al_set_stream(ALconfig config, long number);

/// Opens a port for reading ("r", microphone) or writing ("w", loudspeaker).
/// `name` is for people. Null for another direction or a null configuration;
/// a device that is missing is no reason: it may come later.
ALport ALopenport(const char* name, const char* direction, ALconfig config);

/// Closes the port; what it has not played yet is not played. -1 for a null port.
int ALcloseport(ALport port);

/// Waits until `count` samples are read, at the pace of the device, or of the
/// clock with silence for samples where the device has stopped: 800 samples
/// take about 100 ms and at most 150. Returns 0, -1 at once for a null port or
/// one for writing.
int ALreadsamps(ALport port, int16_t* samples, long count);

/// Queues `count` samples. Never waits: where they do not fit, the oldest in
/// the queue go. Returns 0, -1 for a null port or one for reading.
int ALwritesamps(ALport port, const int16_t* samples, long count);

/// Sets the parameters in `pairs`: name, value, name, value... `length` counts
/// both. Returns 0, or -1 for another device, an unknown name or a rate that
/// cannot be had; then nothing has changed.
int ALsetparams(long device, const long* pairs, long length);

/// Reads the parameters named in `pairs` into the values behind the names.
/// Returns 0, or -1 as above.
int ALgetparams(long device, long* pairs, long length);

/// Ends the devices: files are complete, threads have ended. Ports must have
/// been closed. The next call starts anew, with the variables as they are then.
void qd_al_shutdown();
