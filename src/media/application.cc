#include "media/application.h"

#include "platform/net/sock_library.h"
#include "platform/net/udp_socket.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr unsigned TIME_STAMP_OFFSET = 0x5CE5F148;
constexpr std::chrono::milliseconds LOOK_AGAIN {100}; // at the neighbours

sockaddr_in destination(uint32_t host, int port)
{
    sockaddr_in to {};
    to.sin_family = AF_INET;
    to.sin_port = htons(static_cast<uint16_t>(port));
    to.sin_addr.s_addr = host;
    return to;
}

}

QD_Application::QD_Application(int port) :
    sess_ctrl(QD_Session_Control::instance()),
    read_thread_(std::make_unique<QD_AppReadThread>(this)),
    port_(port)
{
}

QD_Application::~QD_Application() { QD_Session_Control::destroy(); }

int QD_Application::init()
{
    data_sock_ = qd_open_media_socket().release();
    if (data_sock_ < 0)
        return -1;
    const auto port = static_cast<uint16_t>(port_);
    if (qd_bind(data_sock_, SOCK_Library::get_bind_address(), port) < 0)
        return -1;
    return read_thread_->start() < 0 ? -1 : 0;
}

void QD_Application::close()
{
    read_thread_->kill();
    QD_Lock hold(send_mutex_);
    const QD_Fd closed(data_sock_.exchange(-1));
}

int QD_Application::send_data(int type, const char* data, int len)
{
    // Copied once: the whole packet goes to one and the same membership.
    const QD_Roster_Ptr roster = sess_ctrl->get_roster();

    rtp_fix_header header;
    fill_rtp_header(&header, static_cast<unsigned>(type));
    header.ssrc = static_cast<uint32_t>(roster->local_id);
    packet_.resize(static_cast<size_t>(rtp_fix_header::WIRE_SIZE + len));
    auto* wire = reinterpret_cast<uint8_t*>(packet_.data());
    header.encode(std::span<uint8_t, rtp_fix_header::WIRE_SIZE>(wire, rtp_fix_header::WIRE_SIZE));
    memcpy(packet_.data() + rtp_fix_header::WIRE_SIZE, data, static_cast<size_t>(len));

    QD_Lock hold(send_mutex_);
    const int sock = data_sock_;
    if (sock < 0)
        return -1;
    if (neighbours_.any_missing())
        neighbours_.refresh(); // they may have come back
    choose_destinations(*roster);
    const int result = send_to_others(sock);
    const QD_Clock::Time now = QD_Clock::real().now();
    if (now - refreshed_ >= LOOK_AGAIN) { // when the packet is on its way
        neighbours_.refresh();
        refreshed_ = now;
    }
    return result;
}

void QD_Application::choose_destinations(const QD_Roster& roster)
{
    const QD_Clock::Time now = QD_Clock::real().now();
    destinations_.clear();
    for (const auto& member : roster.entries)
        if (member.id != roster.local_id && neighbours_.may_send(member.host, now))
            destinations_.push_back(destination(member.host, port_));
}

// One after the other up to the first that fails, in one system call: that saves a sixth of the
// time if there are many.
int QD_Application::send_to_others(int sock)
{
    iovec whole {packet_.data(), packet_.size()};
    messages_.assign(destinations_.size(), {});
    for (size_t i = 0; i < messages_.size(); ++i) {
        msghdr& message = messages_[i].msg_hdr;
        message.msg_name = &destinations_[i];
        message.msg_namelen = sizeof destinations_[i];
        message.msg_iov = &whole;
        message.msg_iovlen = 1;
    }
    for (size_t sent = 0; sent < messages_.size();) {
        const auto left = static_cast<unsigned>(messages_.size() - sent);
        const int taken = ::sendmmsg(sock, &messages_[sent], left, MSG_DONTWAIT);
        if (taken < 1 && errno != EAGAIN) // a full buffer says nothing of the host
            return -1;
        sent += static_cast<size_t>(std::max(taken, 1));
    }
    return 0;
}

int QD_Application::send_packet(int sock, uint32_t host, int port, const char* buf, int len)
{
    const sockaddr_in to = destination(host, port);
    const ssize_t sent = ::sendto(sock, buf, static_cast<size_t>(len), MSG_DONTWAIT,
        reinterpret_cast<const sockaddr*>(&to), sizeof to);
    return sent < 0 && errno != EAGAIN ? -1 : 0;
}

void QD_Application::fill_rtp_header(rtp_fix_header* hdr, unsigned type)
{
    *hdr = rtp_fix_header();
    hdr->pt = type & 0x7f;
    hdr->seq = static_cast<uint16_t>(sequence++);
    hdr->ts = get_time_stamp();
}

unsigned QD_Application::get_time_stamp()
{
    timeval now {};
    gettimeofday(&now, nullptr);
    return static_cast<unsigned>(now.tv_sec) * 1000U + static_cast<unsigned>(now.tv_usec) / 1000U
        + TIME_STAMP_OFFSET;
}

int QD_Application::get_internal_id(int id)
{
    QD_Session_Hold hold(sess_ctrl);
    const QD_Member* member = sess_ctrl->get_member(id);
    return member == nullptr ? -1 : member->get_internal_id();
}
