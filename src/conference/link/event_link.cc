#include "conference/link/event_link.h"

#include "framework/link/event.h"
#include "platform/base/bytes.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>

namespace {

constexpr size_t HEADER_SIZE = 8;
constexpr size_t MAX_IN = HEADER_SIZE + Event::MAX_LEN;

bool passes() { return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR; }

}

int QD_Event_Link::read()
{
    // Whoever reads takes the events, too: what is left is less than one event.
    const size_t before = in_.size();
    if (before >= MAX_IN)
        return -1;
    in_.resize(MAX_IN);
    const ssize_t got = ::recv(fd_.get(), &in_[before], MAX_IN - before, MSG_DONTWAIT);
    in_.resize(before + (got > 0 ? static_cast<size_t>(got) : 0));
    if (got == 0)
        return 0;
    return got > 0 || passes() ? 1 : -1;
}

int QD_Event_Link::take(std::span<uint8_t> out)
{
    if (in_.size() < out.size())
        return 0;
    const auto end = in_.begin() + static_cast<ptrdiff_t>(out.size());
    std::copy(in_.begin(), end, out.begin());
    in_.erase(in_.begin(), end);
    return 1;
}

int QD_Event_Link::take_event(Received& event)
{
    if (in_.size() < HEADER_SIZE)
        return 0;
    const uint32_t length = qd_get_u32(&in_[4]);
    if (length > Event::MAX_LEN)
        return -1;
    if (in_.size() < HEADER_SIZE + length)
        return 0;
    const auto payload = in_.begin() + HEADER_SIZE;
    event.type = static_cast<int>(qd_get_u32(&in_[0]));
    event.payload.assign(payload, payload + length);
    in_.erase(in_.begin(), payload + length);
    return 1;
}

int QD_Event_Link::send(int type, std::span<const uint8_t> payload)
{
    if (out_.size() + HEADER_SIZE + payload.size() > MAX_QUEUED)
        return -1;
    const QD_Bytes image = qd_event_image(type, payload);
    out_.insert(out_.end(), image.begin(), image.end());
    flush();
    return 0;
}

int QD_Event_Link::flush()
{
    while (!out_.empty()) {
        const ssize_t sent
            = ::send(fd_.get(), out_.data(), out_.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0)
            return passes() ? 0 : -1;
        out_.erase(out_.begin(), out_.begin() + sent);
    }
    return 0;
}
