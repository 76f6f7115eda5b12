#include "audio/audio_app.h"

#include "platform/al/al.h"
#include "platform/base/bytes.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int FRAME_COUNT_MODULUS = 65555;
constexpr int REST_MS = 1000;
constexpr int FRAME_MS = 100;

/// What each kind of link can carry; other values in a file stand for the slowest.
constexpr QD_AudioApp::Codec CODEC_OF_CONNECTION[] = {
    QD_AudioApp::GSM,   // _modem28
    QD_AudioApp::ADPCM, // _isdn
    QD_AudioApp::ADPCM, // _isdn2
    QD_AudioApp::PCM,   // _lan
};

QD_AudioApp::Codec codec_of(Connection connection)
{
    const auto row = static_cast<unsigned>(connection);
    return row < std::size(CODEC_OF_CONNECTION) ? CODEC_OF_CONNECTION[row] : QD_AudioApp::GSM;
}

const char* chars(const uint8_t* bytes) { return reinterpret_cast<const char*>(bytes); }
const uint8_t* bytes(const char* chars) { return reinterpret_cast<const uint8_t*>(chars); }

}

QD_AudioApp::QD_AudioApp() :
    QD_Application(PORT),
    mic_port_(std::make_unique<QD_AudioCapture>()),
    session_(QD_Session_Control::instance()),
    main_form_(session_->getMainForm()),
    cap_thread_(std::make_unique<QD_AudioCapThread>(this))
{
    QD_AudioPlay::init();
    QD_AudioCapture::init();
    mic_port_->open();
    cap_thread_->start();
}

QD_AudioApp::~QD_AudioApp()
{
    cap_thread_->kill();
    mic_port_->close();
    for (int slot = 0; slot < QD_Slot_Table::SIZE; ++slot)
        close_port(slot);
    qd_al_shutdown();
    printf("QD_AudioApp: sent %d packets\n", get_sent());
    QD_Session_Control::destroy();
}

void QD_AudioApp::play()
{
    state_ = TALKING;
    cap_thread_->wake();
}

void QD_AudioApp::stop() { state_ = SILENT; }

void QD_AudioApp::update_options(const _options* options)
{
    compression_ = codec_of(options->connection);
    QD_AudioPlay::set_volume(options->volume);
    QD_AudioCapture::set_gain(options->mic_volume);
    mic_cutoff = options->mic_cutoff;
}

int QD_AudioApp::send_audio()
{
    const int local_id = session_->get_local_id();
    bool known = false;
    {
        QD_Session_Hold hold(session_);
        known = session_->get_member(local_id) != nullptr;
    }
    if (state_ != TALKING || !known) {
        cap_thread_->rest(REST_MS);
        return -1;
    }

    int counted = 0; // what the own statistics take the frame's size to be
    switch (compression_) {
    case PCM:
        sendPCM();
        counted = PCM_SIZE;
        break;
    case ADPCM:
        sendADPCM();
        counted = FRAME / 2;
        break;
    case GSM:
        sendGSM();
        counted = QD_Gsm_Codec::PACKET_SIZE;
        break;
    }

    rtp_fix_header header;
    header.seq = static_cast<uint16_t>(sent_frames_);
    sent_frames_ = (sent_frames_ + 1) % FRAME_COUNT_MODULUS;
    QD_Session_Hold hold(session_);
    if (QD_Member* me = session_->get_member(local_id))
        me->update_audio_stat(&header, counted);
    return 0;
}

// Returns whether the frame is to be sent.
bool QD_AudioApp::capture(Frame& frame)
{
    if (mic_port_->port != nullptr)
        mic_port_->capture(frame.data(), FRAME);
    else
        cap_thread_->rest(FRAME_MS); // silence, at the pace that a microphone would keep
    const int peak = get_level(frame);
    mic_level_.store(peak, QD_Clock::real().now());
    const int level = peak * 200 / 65536; // 0..99
    return level >= mic_cutoff;
}

short QD_AudioApp::get_level(std::span<const short> samples)
{
    short level = 0;
    for (short sample : samples)
        level = std::max(level, sample);
    return level;
}

void QD_AudioApp::sendPCM()
{
    Frame frame {};
    if (!capture(frame))
        return;
    uint8_t packet[PCM_SIZE];
    for (size_t i = 0; i < frame.size(); ++i)
        qd_put_u16(&packet[2 * i], static_cast<uint16_t>(frame[i]));
    send_data(PCM, chars(packet), PCM_SIZE);
}

void QD_AudioApp::sendADPCM()
{
    Frame frame {};
    if (!capture(frame))
        return;
    uint8_t packet[ADPCM_SIZE] = {};
    qd_put_u16(packet, static_cast<uint16_t>(adpcmsendstate.valprev));
    packet[2] = adpcmsendstate.index;
    adpcm_coder(frame.data(), &packet[3], FRAME, &adpcmsendstate);
    send_data(ADPCM, chars(packet), ADPCM_SIZE);
}

void QD_AudioApp::sendGSM()
{
    Frame frame {};
    if (!capture(frame))
        return;
    uint8_t packet[QD_Gsm_Codec::PACKET_SIZE];
    gsm_.encode(frame, packet);
    send_data(GSM, chars(packet), sizeof packet);
}

int QD_AudioApp::process_message(rtp_fix_header* hdr, char* data, int len)
{
    if (hdr->type != rtp_fix_header::VERSION || len < 0)
        return -1;
    int internal_id = 0;
    {
        QD_Session_Hold hold(session_);
        QD_Member* member = session_->get_member(static_cast<int>(hdr->ssrc));
        if (member == nullptr)
            return -2;
        internal_id = member->get_internal_id();
        member->update_audio_stat(hdr, len);
    }

    const int slot = play_slot(internal_id);
    if (slot < 0)
        return 0; // a hundred others are being heard already
    if (repeats_[static_cast<size_t>(slot)].seen(*hdr, QD_Clock::real().now()))
        return 0;
    switch (hdr->pt) {
    case ADPCM:
        playADPCM(slot, data, len);
        break;
    case GSM:
        playGSM(slot, data, len);
        break;
    case PCM:
        playPCM(slot, data, len);
        break;
    case STOPPED:
        if (main_form_ != nullptr)
            main_form_->setSpeakerLevel(0);
        close_port(slot);
        break;
    }
    return 0;
}

// The slot of a sender with its port open; ports of those who left are closed on the way.
int QD_AudioApp::play_slot(int internal_id)
{
    QD_Roster_Ptr roster = session_->get_roster();
    if (roster != swept_) {
        slots_.sweep(*roster, [this](int slot) { close_port(slot); });
        swept_ = std::move(roster);
    }
    bool fresh = false;
    const int slot = slots_.use(internal_id, UserData::get_time_stamp(), &fresh);
    if (slot < 0)
        return -1;
    if (fresh) {
        close_port(slot);
        repeats_[static_cast<size_t>(slot)] = {};
    }
    auto& port = ports[static_cast<size_t>(slot)];
    if (!port) {
        port = std::make_unique<QD_AudioPlay>();
        port->open(internal_id + 1);
    }
    return slot;
}

void QD_AudioApp::close_port(int slot)
{
    auto& port = ports[static_cast<size_t>(slot)];
    if (port)
        port->close();
    port.reset();
}

void QD_AudioApp::play_frame(int slot, const Frame& frame)
{
    speaker_level_.store(get_level(frame), QD_Clock::real().now());
    ports[static_cast<size_t>(slot)]->play(frame.data(), FRAME);
}

void QD_AudioApp::playPCM(int slot, const char* data, int len)
{
    if (len < PCM_SIZE)
        return;
    Frame frame;
    for (size_t i = 0; i < frame.size(); ++i)
        frame[i] = static_cast<short>(qd_get_u16(bytes(data) + 2 * i));
    play_frame(slot, frame);
}

void QD_AudioApp::playADPCM(int slot, const char* data, int len)
{
    if (len < ADPCM_USED)
        return;
    adpcm_state state {};
    state.valprev = static_cast<short>(qd_get_u16(bytes(data)));
    state.index = bytes(data)[2]; // a sender may claim any
    Frame frame;
    adpcm_decoder(bytes(data) + 3, frame.data(), FRAME, &state);
    play_frame(slot, frame);
}

void QD_AudioApp::playGSM(int slot, const char* data, int len)
{
    constexpr size_t SIZE = QD_Gsm_Codec::PACKET_SIZE;
    if (len < static_cast<int>(SIZE))
        return;
    Frame frame;
    gsm_.decode(std::span<const uint8_t, SIZE>(bytes(data), SIZE), frame);
    play_frame(slot, frame);
}

void QD_AudioApp::show_levels()
{
    if (main_form_ == nullptr)
        return;
    const QD_Clock::Time now = QD_Clock::real().now();
    main_form_->setMicLevel(mic_level_.read(now));
    main_form_->setSpeakerLevel(speaker_level_.read(now));
}
