// The RTP fixed header (RFC 3550, 5.1) at the start of every media datagram.
#pragma once

#include <cstdint>
#include <span>

/// Twelve bytes on the wire, plain numbers here. The system's own payload types
/// and its use of ssrc (the sender's member id) are not those of the RTP profiles.
struct rtp_fix_header {
    static constexpr int WIRE_SIZE = 12;
    static constexpr unsigned VERSION = 2;

    unsigned type = VERSION; // protocol version, 0..3
    unsigned p = 0;          // padding flag
    unsigned x = 0;          // extension flag
    unsigned cc = 0;         // number of contributing sources, 0..15
    unsigned m = 0;          // marker
    unsigned pt = 0;         // payload type, 0..127
    uint16_t seq = 0;        // packets sent before this one, modulo 65536
    uint32_t ts = 0;         // send time, milliseconds
    uint32_t ssrc = 0;       // member id of the sender

    /// Writes the wire image; fields that are too wide are cut to their width.
    void encode(std::span<uint8_t, WIRE_SIZE> out) const;

    /// Reads the wire image; every twelve bytes are a header.
    static rtp_fix_header decode(std::span<const uint8_t, WIRE_SIZE> in);

    bool operator==(const rtp_fix_header&) const = default;
};

using RTPheader = rtp_fix_header;
