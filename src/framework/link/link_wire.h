// What the companion writes on a client's link: events and member records as bytes.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

using QD_Bytes = std::vector<uint8_t>;

/// The type of the events that carry member records. A client looks at their
/// payload only; the type must merely not ask for an echo.
constexpr int QD_MEMBERSHIP_EVENT = 1;

/// A member's name in a record, in bytes; a client keeps no more.
constexpr size_t QD_MAX_NAME = 19;

/// Type and length, big-endian, then the payload.
QD_Bytes qd_event_image(int type, std::span<const uint8_t> payload);

/// Payload: the member with this IPv4 address (as a number) and conference id
/// is in the conference from now on. `name` has at most QD_MAX_NAME bytes.
QD_Bytes qd_add_record(uint32_t address, uint32_t id, std::string_view name);

/// Payload: that member is in the conference no longer.
QD_Bytes qd_remove_record(uint32_t address, uint32_t id, std::string_view name);

/// Payload: the client is to end.
QD_Bytes qd_end_record();
