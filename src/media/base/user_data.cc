#include "media/base/user_data.h"

#include <ctime>

namespace {

constexpr unsigned LATE_MS = 300;
constexpr unsigned PAUSE_MS = 1000; // a longer gap is a pause, not a late frame
constexpr int FRAME_MS = 100;

// Setting the time of day must neither wreck the figures nor starve the sender
// that is paced by them.
timespec monotonic_now()
{
    timespec now {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now;
}

}

unsigned UserData::get_time_stamp()
{
    static const long start_seconds = monotonic_now().tv_sec;
    const timespec now = monotonic_now();
    return static_cast<unsigned>((now.tv_sec - start_seconds) * 1000 + now.tv_nsec / 1'000'000);
}

UserData::UserData(const rtp_fix_header* hdr, int len, unsigned now) :
    bytes(len),
    last_ts(now),
    last_seq(hdr->seq),
    first_time(now)
{
    reset();
}

void UserData::reset()
{
    frames_received = frames_lost = frames_late = bytes = latency = pos = 0;
    timestamps.fill(0);
    sizes.fill(0);
}

int UserData::frame(const rtp_fix_header* hdr, int len, unsigned now)
{
    ++frames_received;
    bytes = static_cast<int>(static_cast<unsigned>(bytes) + static_cast<unsigned>(len));
    if (frames_received == 1) {
        last_ts = first_time = now;
        last_seq = hdr->seq;
        return 1;
    }

    int in_order = 1;
    if (hdr->seq < last_seq) {
        ++frames_lost;
        in_order = 0;
    } else {
        last_seq = hdr->seq;
    }
    if (last_ts + LATE_MS < now && now < last_ts + PAUSE_MS)
        ++frames_late;
    latency = static_cast<int>(static_cast<unsigned>(latency) + (now - last_ts) - FRAME_MS);
    last_ts = now;
    timestamps[static_cast<size_t>(pos)] = now;
    sizes[static_cast<size_t>(pos)] = len;
    pos = (pos + 1) % RING_SIZE;
    return in_order;
}

int UserData::percent(int part) const
{
    if (frames_received == 0)
        return 0;
    return static_cast<int>(part * 100L / (static_cast<long>(frames_received) + frames_lost));
}

double UserData::getKbps(unsigned now) const
{
    const unsigned since = now - WINDOW_MS;
    long sum = 0;
    for (size_t i = 0; i < timestamps.size(); ++i)
        if (timestamps[i] > since)
            sum += sizes[i];
    return static_cast<double>(sum * 8 / WINDOW_MS);
}

double UserData::getFps(unsigned now) const
{
    const unsigned since = now - WINDOW_MS;
    int count = 0;
    for (unsigned arrival : timestamps)
        if (arrival > since)
            ++count;
    return count * 1000.0 / WINDOW_MS;
}

double UserData::getLatency() const
{
    return frames_received == 0 ? 0.0 : static_cast<double>(latency) / frames_received;
}
