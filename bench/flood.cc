#include "bench/flood.h"

#include "media/base/rtp_header.h"
#include "platform/net/udp_socket.h"

#include <algorithm>
#include <netinet/in.h>
#include <sys/socket.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr size_t HEADER = rtp_fix_header::WIRE_SIZE;
constexpr unsigned HIGHEST_MEMBER = 100; // strangers claim to be others

}

QD_Flood::QD_Flood(const std::vector<uint32_t>& from, uint32_t host, uint16_t port,
    const QD_Rubbish& rubbish, const std::vector<std::string>& real, double rate) :
    host_(host),
    port_(port),
    rate_(rate)
{
    make(rubbish, real);
    for (uint32_t address : from) {
        sockets_.emplace_back(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
        qd_bind(sockets_.back().get(), address, 0);
    }
    thread_ = std::thread([this] { run(); });
}

QD_Flood::~QD_Flood()
{
    going_ = false;
    thread_.join();
}

void QD_Flood::make(const QD_Rubbish& rubbish, const std::vector<std::string>& real)
{
    for (size_t i = 0; i < PACKETS; ++i)
        packets_.push_back(packet(rubbish, real));
}

std::string QD_Flood::packet(const QD_Rubbish& rubbish, const std::vector<std::string>& real)
{
    std::string bytes;
    if (rubbish.mutated) {
        bytes = real[random_() % real.size()];
        for (unsigned changes = 1 + random_() % 8; changes > 0; --changes)
            bytes[random_() % bytes.size()] = static_cast<char>(random_());
    } else {
        bytes.resize(rubbish.least + random_() % (rubbish.most - rubbish.least + 1));
        std::generate(bytes.begin(), bytes.end(), [this] { return static_cast<char>(random_()); });
    }
    if (bytes.size() < HEADER)
        return bytes;
    auto* wire = reinterpret_cast<uint8_t*>(bytes.data());
    const std::span<uint8_t, HEADER> image(wire, HEADER);
    rtp_fix_header header = rtp_fix_header::decode(image);
    if (rubbish.version == QD_Rubbish::RIGHT)
        header.type = rtp_fix_header::VERSION;
    else if (rubbish.version == QD_Rubbish::WRONG)
        header.type = random_() % 2 == 0 ? 1 : 3;
    if (rubbish.sender != 0)
        header.ssrc = static_cast<uint32_t>(rubbish.sender);
    else if (header.ssrc <= HIGHEST_MEMBER)
        header.ssrc += HIGHEST_MEMBER + 1;
    header.encode(image);
    return bytes;
}

// A thousand times a second, as many as are due.
void QD_Flood::run()
{
    const Clock::time_point begin = Clock::now();
    for (Clock::time_point next = begin; going_; next += std::chrono::milliseconds(1)) {
        std::this_thread::sleep_until(next);
        const double due = std::chrono::duration<double>(Clock::now() - begin).count() * rate_;
        const double late = due - static_cast<double>(sent_);
        for (double left = std::min(late, rate_ / 20); left >= 1 && going_; left -= AT_ONCE)
            send_some(std::min(static_cast<size_t>(left), AT_ONCE));
    }
}

void QD_Flood::send_some(size_t count)
{
    sockaddr_in to {};
    to.sin_family = AF_INET;
    to.sin_port = htons(port_);
    to.sin_addr.s_addr = host_;
    iovec parts[AT_ONCE];
    mmsghdr messages[AT_ONCE] = {};
    for (size_t i = 0; i < count; ++i) {
        std::string& packet = packets_[next_++ % PACKETS];
        parts[i] = {packet.data(), packet.size()};
        messages[i].msg_hdr.msg_name = &to;
        messages[i].msg_hdr.msg_namelen = sizeof to;
        messages[i].msg_hdr.msg_iov = &parts[i];
        messages[i].msg_hdr.msg_iovlen = 1;
    }
    const QD_Fd& socket = sockets_[next_socket_++ % sockets_.size()];
    const int taken = ::sendmmsg(socket.get(), messages, static_cast<unsigned>(count), 0);
    for (int i = 0; i < taken; ++i)
        bytes_ += static_cast<long>(parts[i].iov_len);
    sent_ += std::max(taken, 0);
}
