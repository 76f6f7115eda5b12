// The video medium: camera, codecs, pacing, packets, and pictures for the members' windows.
#pragma once

#include "media/application.h"
#include "media/slot_table.h"
#include "platform/base/semaphore.h"
#include "platform/vl/picture.h"
#include "video/capture_thread.h"
#include "video/pacing.h"
#include "video/pass_gate.h"
#include "video/trace_file.h"

#include <array>
#include <atomic>
#include <memory>

/// QCIF pictures, one packet a picture; every tenth is intra, and the first
/// after options were applied. A payload is
///   0      picture number, 1..255, 0, 1, ...
///   1..3   not used
///   4..11  send time, seconds and microseconds, big-endian
///   12..   the coded picture, and three bytes that are not used
///
/// The user-interface thread makes it, controls it and destroys it; the
/// capture thread calls send_video(), the receive thread process_message().
/// Locks: the session lock, then the codec semaphore.
class QD_VideoApp : public QD_Application {
public:
    static constexpr int PORT = 34999;
    static constexpr int OVERHEAD = 15; // payload bytes beside the picture
    static constexpr int PICTURE_OFFSET = 12;
    static constexpr int INTRA_EVERY = 10; // pictures

    /// Payload types. Those that carry pictures to be sent are also the values of the codec.
    enum Type { H263 = 0, H261 = 1, OPEN_DISPLAY = 3, CLOSE_DISPLAY = 5, YUV9 = 10 };

    /// Sets up the codecs and the camera, opens "video.log" in the current
    /// directory, and starts the capture thread; nothing is sent before play().
    QD_VideoApp();

    /// Ends capturing and closes the camera; close() has been called before.
    ~QD_VideoApp() override;

    /// Opens the local member's window and starts sending, if there is a local
    /// member and nothing is sent yet.
    void play();

    /// Stops sending and closes the window.
    void stop();

    /// Codec and limits by connection type; may set `fps_max` in the record.
    /// Waits for a picture under way, at most PASS_MS.
    void update_options(_options* options);

    /// One picture: capture, show, code, send, count, pause. Returns 0; -1 after
    /// up to a second when no member is the local one. Not playing, it rests for
    /// up to a second and returns 0. Capture thread.
    int send_video();

    /// Counts a packet and shows its picture. Returns 0; -1 if it is no packet
    /// of this protocol or its sender is no member. Receive thread.
    int process_message(rtp_fix_header* hdr, char* data, int len) override;

private:
    /// Who sent a packet. The member may have left, and its id be another's,
    /// by the time that a picture is decoded.
    struct Sender {
        int id;
        int internal_id;
    };

    // Decode a payload and post its picture to the sender's window. Return 0 when
    // a picture was produced, else -1.
    int displayH263(const Sender& from, const char* data, int len);
    int displayH261(const Sender& from, const char* data, int len);
    int displayYUV9(const Sender& from, const char* data, int len);
    void post(const Sender& from, const char* picture) const;
    int decoder_slot(int internal_id);

    int one_pass();
    int code(const char* picture, bool intra);
    void show_self(const char* picture);
    int send_video_data(int type, const char* data, int len);
    void wait_for_next_frame();

    enum State { STOPPED = 0, PLAYING = 1 };
    static constexpr int PASS_MS = 1000;

    // Shared by all threads.
    std::atomic<int> state_ = STOPPED;
    std::atomic<int> compression_ = H263;
    std::atomic<bool> first = true; // the next picture begins a new cycle
    std::atomic<double> kbps_limit_ = 20.0;
    std::atomic<int> fps_max_ = 5;
    QD_Semaphore semH263_ {1}; // guards both codecs
    QD_Pass_Gate pass_;

    // The capture thread's.
    int frame_no = 0; // place in the intra cycle
    int msg_no = 0;   // of the last picture sent
    QD_Pacing pacing_;
    std::array<char, QD_CODED_SIZE> coded_;
    std::array<char, QD_CODED_SIZE + OVERHEAD> payload_ {};

    // The receive thread's.
    QD_Slot_Table slots_;
    QD_Roster_Ptr swept_; // the membership that slots_ was last compared with
    QD_Trace_File log_;

    QD_Session_Control* const session_;
    std::unique_ptr<QD_VideoCapThread> cap_thread_;
};
