// The audio medium: microphone, codecs, packets, and a speaker port per sender.
#pragma once

#include "audio/adpcm.h"
#include "audio/audio_capture.h"
#include "audio/audio_play.h"
#include "audio/capture_thread.h"
#include "audio/gsm_codec.h"
#include "audio/level_hold.h"
#include "audio/repeats.h"
#include "media/application.h"
#include "media/slot_table.h"

#include <array>
#include <atomic>
#include <memory>
#include <span>

/// 8000 samples a second, mono, in frames of 100 ms, one packet a frame.
/// Payloads carry big-endian samples; inside, samples are in host order.
///
/// The user-interface thread makes it, controls it and destroys it; the
/// capture thread calls send_audio(), the receive thread process_message().
class QD_AudioApp : public QD_Application {
public:
    static constexpr int PORT = 12567;
    static constexpr int FRAME = 800; // samples

    /// Payload types.
    enum Codec { ADPCM = 13, GSM = 14, PCM = 15, STOPPED = 19 };

    /// Payload bytes. An ADPCM packet is as long as a PCM one; a receiver needs
    /// the 403 bytes that it uses.
    static constexpr int PCM_SIZE = 1600;
    static constexpr int ADPCM_SIZE = 1600;
    static constexpr int ADPCM_USED = 403;

    /// Opens the microphone and starts capturing; talking from the start, as
    /// PCM until options are applied.
    QD_AudioApp();

    /// Ends capturing and closes all ports; close() has been called before.
    ~QD_AudioApp() override;

    /// Talk, and be silent.
    void play();
    void stop();

    /// Codec by connection type, volume, gain and cut-off; in force from the next frame on.
    void update_options(const _options* options);

    /// Captures one frame, 100 ms, and sends it unless it is below the cut-off.
    /// Returns 0; -1 after up to a second when not talking or no member is the
    /// local one. Capture thread.
    int send_audio();

    /// The largest sample, at least 0: negative peaks do not count.
    static short get_level(std::span<const short> samples);

    /// Counts and plays a packet. Returns 0; -1 if it is no packet of this
    /// protocol; -2 if its sender is no member. A payload shorter than its codec
    /// needs, and a packet that comes twice, is counted and not played. Receive thread.
    int process_message(rtp_fix_header* hdr, char* data, int len) override;

    /// Hands the levels of the frames just captured and played to the main
    /// form. User-interface thread.
    void show_levels();

private:
    using Frame = std::array<short, FRAME>;

    void sendPCM();
    void sendADPCM();
    void sendGSM();
    bool capture(Frame& frame);
    int play_slot(int internal_id);
    void play_frame(int slot, const Frame& frame);
    void playPCM(int slot, const char* data, int len);
    void playADPCM(int slot, const char* data, int len);
    void playGSM(int slot, const char* data, int len);
    void close_port(int slot);

    // The receive thread's.
    QD_Slot_Table slots_;
    std::array<std::unique_ptr<QD_AudioPlay>, QD_Slot_Table::SIZE> ports;
    std::array<QD_Repeats, QD_Slot_Table::SIZE> repeats_;
    QD_Roster_Ptr swept_; // the membership that slots_ was last compared with

    // The capture thread's.
    std::unique_ptr<QD_AudioCapture> mic_port_;
    adpcm_state adpcmsendstate {};
    int sent_frames_ = 0; // modulo FRAME_COUNT_MODULUS

    // Shared by all threads.
    enum State { TALKING = 10, SILENT = 19 };
    std::atomic<int> state_ = TALKING;
    std::atomic<int> compression_ = PCM;
    std::atomic<int> mic_cutoff = 0;
    QD_Gsm_Codec gsm_; // one state for all that is coded and decoded
    QD_Level_Hold speaker_level_;
    QD_Level_Hold mic_level_;

    QD_Session_Control* const session_;
    QD_Main_View* const main_form_;
    std::unique_ptr<QD_AudioCapThread> cap_thread_;
};
