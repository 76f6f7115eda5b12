#include "signalling/places.h"

#include "platform/net/sock_stream.h"

#include <algorithm>

std::unique_ptr<QD_Places::Place> QD_Places::take(uint32_t host, SOCK_Stream* stream)
{
    if (!make_room(MAX_PER_HOST, [host](const Guest& guest) { return guest.host == host; })
        || !make_room(MAX_STREAMS, [](const Guest&) { return true; }))
        return nullptr;
    guests_->push_back({host, stream});
    return std::unique_ptr<Place>(new Place(guests_, std::prev(guests_->end())));
}

bool QD_Places::make_room(int bound, const Among& among)
{
    const auto counts = [&](const Guest& guest) { return guest.stream != nullptr && among(guest); };
    if (std::count_if(guests_->begin(), guests_->end(), counts) < bound)
        return true;
    const auto idlest = std::find_if(guests_->begin(), guests_->end(),
        [&](const Guest& guest) { return counts(guest) && !in_use_(guest.stream); });
    if (idlest == guests_->end())
        return false;
    idlest->stream->close(); // its handler finds it at its end
    idlest->stream = nullptr;
    return true;
}
