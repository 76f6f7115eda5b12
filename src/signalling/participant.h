// One participant as messages carry it, and the list of all of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// Integers are big-endian on the wire, the host goes in network byte order.
struct _participant {
    static constexpr size_t IMAGE_SIZE = 28;
    static constexpr size_t USER_SIZE = 20;

    int32_t handle = 0;
    char user[USER_SIZE] = ""; // terminated
    uint32_t host = 0;         // IPv4, network byte order

    /// Replaces the user name; what does not fit is cut.
    void set_user(const char* name);

    static constexpr size_t image_size() { return IMAGE_SIZE; }

    /// `out` is IMAGE_SIZE bytes long; what follows the end of the name is zero there.
    void encode(std::span<uint8_t> out) const;
    static _participant decode(std::span<const uint8_t, IMAGE_SIZE> in);
};

/// The members of the sender's conference, as invitations and confirmations carry them.
struct QD_Participant_List {
    static constexpr size_t MAX_MEMBERS = 100;

    int32_t sender_id = 0;
    std::vector<_participant> members;

    /// 28 bytes for each member and 35 more, of which the last 27 are zero.
    size_t image_size() const { return 8 + members.size() * _participant::IMAGE_SIZE + 27; }

    /// `out` is image_size() bytes long.
    void encode(std::span<uint8_t> out) const;

    /// What follows the members may be missing. Nothing if there are more
    /// members than MAX_MEMBERS, fewer than none, or fewer bytes than they need.
    static std::optional<QD_Participant_List> decode(std::span<const uint8_t> in);
};
