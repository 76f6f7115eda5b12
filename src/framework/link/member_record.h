// What an event from the framework says about a member.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

/// The payload of an event: a command character, then for members the IPv4
/// address, the id, and a name of which the length comes first.
struct QD_Member_Record {
    /// Commands. ADD_PADDED has one byte between command and address.
    enum Command : char { ADD_PADDED = '<', ADD = '=', END = '>', REMOVE = '?' };

    Command command = END;
    uint32_t host = 0; // network byte order
    int32_t id = 0;
    std::string name; // up to 255 bytes, of any value; not read for REMOVE

    /// Reads a payload. Nothing if it is empty, has another command, or is
    /// shorter than it says; what follows the record is ignored, as is all
    /// behind the id for REMOVE.
    static std::optional<QD_Member_Record> decode(std::span<const uint8_t> payload);
};
