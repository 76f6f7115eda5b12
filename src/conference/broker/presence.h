// What a member says of itself to the others of its conference, through a broker.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// One member's record as it lies on the broker: a line of text
///
///     STATE ID ADDRESS SEQUENCE NAME
///
/// such as "live 7340032 10.0.0.5 12 anna", one blank between fields, decimal
/// numbers without leading zeros.
struct QD_Presence {
    enum State {
        CLAIM, // asks for its id and address; not in the conference yet
        LIVE,  // in the conference
        LEFT   // goes, in order
    };

    static constexpr uint32_t MIN_ID = 1U << 16;
    static constexpr uint32_t MAX_ID = (1U << 31) - 1;
    static constexpr size_t MAX_SIZE = 96; // bytes of the longest line, rounded up

    State state = CLAIM;
    uint32_t id = MIN_ID;
    uint32_t address = 0;  // IPv4, as a number
    uint32_t sequence = 0; // grows with every record of this member
    std::string name;

    std::string encode() const;

    /// Reads a line. Returns "" or what is wrong with it, a sentence; the
    /// record is unchanged then.
    std::string decode(std::string_view line);

    /// "anna@10.0.0.5"
    std::string label() const;
};
