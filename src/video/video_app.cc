#include "video/video_app.h"

#include "platform/base/bytes.h"
#include "platform/vl/vl.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <sys/time.h>

namespace {

constexpr int REST_MS = 1000;
constexpr double LONGEST_WAIT_MS = 1e9; // what fits an int

static_assert(QD_Member::PICTURE_SIZE == QD_PICTURE_SIZE);

/// What each kind of link can carry.
struct Link {
    QD_VideoApp::Type codec;
    double kbps;
    int fps_max;                  // written into the options, unless
    QD_VideoApp::Type unless_was; // this was the codec before
};
constexpr Link LINKS[] = {
    {QD_VideoApp::H263, 20, 10, QD_VideoApp::H263},   // _modem28
    {QD_VideoApp::H261, 60, 5, QD_VideoApp::H261},    // _isdn
    {QD_VideoApp::H261, 120, 10, QD_VideoApp::H261},  // _isdn2
    {QD_VideoApp::H261, 1500, 10, QD_VideoApp::H263}, // _lan; from a modem it keeps the user's rate
};

uint8_t* bytes(char* chars) { return reinterpret_cast<uint8_t*>(chars); }

}

QD_VideoApp::QD_VideoApp() :
    QD_Application(PORT),
    log_("video.log"),
    session_(QD_Session_Control::instance()),
    cap_thread_(std::make_unique<QD_VideoCapThread>(this))
{
    qd_set_video_rate(kbps_limit_, fps_max_);
    H263initEncoder(QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT);
    H263initDecoder();
    init_codec();
    init_encoder();
    init_decoder();
    initcapture(QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT);
    cap_thread_->start();
}

QD_VideoApp::~QD_VideoApp()
{
    cap_thread_->kill();
    qd_vl_shutdown();
    printf("QD_VideoApp: sent %d packets\n", get_sent());
    QD_Session_Control::destroy();
}

void QD_VideoApp::play()
{
    QD_Member* local = session_->get_member(session_->get_local_id());
    if (state_ != STOPPED || local == nullptr)
        return;
    local->open_dpy_req();
    state_ = PLAYING;
    cap_thread_->wake();
}

void QD_VideoApp::stop()
{
    QD_Session_Hold hold(session_);
    if (state_ != PLAYING)
        return;
    state_ = STOPPED;
    if (QD_Member* local = session_->get_member(session_->get_local_id()))
        local->close_dpy_req();
}

void QD_VideoApp::update_options(_options* options)
{
    const int state = state_.exchange(STOPPED);
    if (state == PLAYING) {
        cap_thread_->wake();
        pass_.wait(std::chrono::milliseconds(PASS_MS));
    }
    first = true;

    const auto row = static_cast<unsigned>(options->connection);
    if (row < std::size(LINKS)) {
        const Link& link = LINKS[row];
        if (compression_ != link.unless_was)
            options->fps_max = link.fps_max;
        compression_ = link.codec;
        kbps_limit_ = link.kbps;
    } else {
        compression_ = H263;
    }
    fps_max_ = options->fps_max;
    {
        QD_Sem_Hold hold(semH263_);
        qd_set_video_rate(kbps_limit_, fps_max_);
    }
    state_ = state;
    cap_thread_->wake();
}

int QD_VideoApp::send_video()
{
    int result = 0;
    {
        const QD_Pass_Gate::Pass pass(pass_);
        if (state_ == PLAYING)
            result = one_pass();
    }
    if (state_ != PLAYING || result < 0)
        cap_thread_->rest(REST_MS);
    return result;
}

int QD_VideoApp::one_pass()
{
    const int local_id = session_->get_local_id();
    {
        QD_Session_Hold hold(session_);
        if (session_->get_member(local_id) == nullptr)
            return -1;
    }
    if (first.exchange(false))
        frame_no = 0;
    const int type = compression_;
    const QD_Picture_Ptr picture = getFrame(QD_PICTURE_WIDTH, QD_PICTURE_HEIGHT);
    show_self(picture.get());
    const int length = code(picture.get(), frame_no == 0);
    send_video_data(type, coded_.data(), length);

    rtp_fix_header header;
    header.seq = static_cast<uint16_t>(msg_no);
    {
        QD_Session_Hold hold(session_);
        if (QD_Member* local = session_->get_member(local_id))
            local->update_video_stat(&header, length);
    }
    frame_no = (frame_no + 1) % INTRA_EVERY;
    wait_for_next_frame();
    return 0;
}

// Not once stopped: a picture would open the window again.
void QD_VideoApp::show_self(const char* picture)
{
    QD_Session_Hold hold(session_);
    QD_Member* local = session_->get_member(session_->get_local_id());
    if (state_ == PLAYING && local != nullptr)
        local->display_req(picture);
}

// Leaves the coded picture in coded_. Returns its size, below 1 for none.
int QD_VideoApp::code(const char* picture, bool intra)
{
    QD_Sem_Hold hold(semH263_);
    if (compression_ == H263)
        return intra ? H263codeIntraFrame(picture, coded_.data())
                     : H263codeFrame(&picture, coded_.data());
    return intra ? p64EncodeIntraFrame(picture, coded_.data())
                 : p64EncodeFrame(picture, coded_.data());
}

// Returns what send_data returns, or -2 if there is no picture.
int QD_VideoApp::send_video_data(int type, const char* data, int len)
{
    if (len < 1)
        return -2;
    msg_no = (msg_no + 1) % 256;
    timeval now {};
    gettimeofday(&now, nullptr);
    payload_[0] = static_cast<char>(msg_no);
    qd_put_u32(bytes(&payload_[4]), static_cast<uint32_t>(now.tv_sec));
    qd_put_u32(bytes(&payload_[8]), static_cast<uint32_t>(now.tv_usec));
    char* end = std::copy_n(data, len, &payload_[PICTURE_OFFSET]);
    std::fill_n(end, OVERHEAD - PICTURE_OFFSET, '\0');
    return send_data(type, payload_.data(), len + OVERHEAD);
}

void QD_VideoApp::wait_for_next_frame()
{
    double kbps = 0;
    double fps = 0;
    {
        QD_Session_Hold hold(session_);
        const QD_Member* local = session_->get_member(session_->get_local_id());
        if (local != nullptr && local->get_video_data() != nullptr) {
            kbps = local->get_video_data()->getKbps();
            fps = local->get_video_data()->getFps();
        }
    }
    const double wait = pacing_.adapt(kbps, fps, kbps_limit_, fps_max_);
    cap_thread_->rest(static_cast<int>(std::min(wait, LONGEST_WAIT_MS)));
}

int QD_VideoApp::process_message(rtp_fix_header* hdr, char* data, int len)
{
    if (hdr->type != rtp_fix_header::VERSION || len < 0)
        return -1;
    Sender from {static_cast<int>(hdr->ssrc), -1};
    {
        QD_Session_Hold hold(session_);
        QD_Member* member = session_->get_member(from.id);
        if (member == nullptr)
            return -1;
        from.internal_id = member->get_internal_id();
        member->update_video_stat(hdr, len);
        if (hdr->pt == OPEN_DISPLAY)
            member->open_dpy_req();
        else if (hdr->pt == CLOSE_DISPLAY)
            member->close_dpy_req();
    }
    switch (hdr->pt) {
    case H263:
        displayH263(from, data, len);
        break;
    case H261:
        displayH261(from, data, len);
        break;
    case YUV9:
        displayYUV9(from, data, len);
        break;
    }
    return 0;
}

// Hands a picture to its sender's window, unless the sender has left meanwhile.
void QD_VideoApp::post(const Sender& from, const char* picture) const
{
    QD_Session_Hold hold(session_);
    QD_Member* member = session_->get_member(from.id);
    if (member != nullptr && member->get_internal_id() == from.internal_id)
        member->display_req(picture);
}

// The decoders of a sender, as new if it had none; those who left are forgotten
// on the way. -1 if a hundred others have them. With the codec semaphore.
int QD_VideoApp::decoder_slot(int internal_id)
{
    QD_Roster_Ptr roster = session_->get_roster();
    if (roster != swept_) {
        slots_.sweep(*roster, qd_reset_decoder);
        swept_ = std::move(roster);
    }
    bool fresh = false;
    const int slot = slots_.use(internal_id, UserData::get_time_stamp(), &fresh);
    if (fresh && slot >= 0)
        qd_reset_decoder(slot);
    return slot;
}

// Trace lines are written without the codec semaphore and the session lock, so that a
// slow disk holds up no other thread; they come in the order of the steps all the same.
int QD_VideoApp::displayH263(const Sender& from, const char* data, int len)
{
    log_.start(from.internal_id, 31);
    QD_Picture_Ptr picture;
    {
        QD_Sem_Hold codec(semH263_);
        if (len > OVERHEAD)
            picture = H263decodeFrame(
                decoder_slot(from.internal_id), data + PICTURE_OFFSET, len - OVERHEAD);
    }
    log_.lines({32, 33, 34});
    if (picture) {
        log_.lines({35, 36});
        post(from, picture.get());
        log_.lines({37, 38});
    }
    log_.lines({39, 40});
    return picture ? 0 : -1;
}

int QD_VideoApp::displayH261(const Sender& from, const char* data, int len)
{
    log_.start(from.internal_id, 1);
    QD_Picture_Ptr picture;
    {
        QD_Sem_Hold codec(semH263_);
        const int slot = len > OVERHEAD ? decoder_slot(from.internal_id) : -1;
        if (slot >= 0) {
            picture = std::make_unique_for_overwrite<char[]>(QD_PICTURE_SIZE);
            decode_frame(data + PICTURE_OFFSET, len - OVERHEAD, picture.get(), 0, slot);
        }
    }
    log_.lines({2, 3});
    if (picture) {
        log_.lines({4, 5, 6});
        post(from, picture.get());
        log_.lines({7, 8, 9});
    } else {
        log_.lines({5});
    }
    log_.lines({10, 11});
    return picture ? 0 : -1;
}

int QD_VideoApp::displayYUV9(const Sender& from, const char* data, int len)
{
    if (len - OVERHEAD < QD_YUV9_SIZE)
        return -1;
    const auto picture = std::make_unique_for_overwrite<char[]>(QD_PICTURE_SIZE);
    char* y = picture.get();
    YVU9toYUV411(data + PICTURE_OFFSET, y, y + QD_U_OFFSET, y + QD_V_OFFSET, QD_PICTURE_WIDTH,
        QD_PICTURE_HEIGHT);
    post(from, y);
    return 0;
}
