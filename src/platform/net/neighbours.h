// Which hosts of the local network do not answer when the system asks for their hardware address.
#pragma once

#include "platform/base/clock.h"
#include "platform/base/fd.h"

#include <cstdint>
#include <span>
#include <vector>

/// What is sent to a host that vanished waits in the sender's buffer for up to
/// three seconds, until the system gives its address up. Three such hosts fill
/// the buffer, and then nothing goes to the others either. So they get a datagram
/// now and then instead of each, which is also what finds them again.
///
/// Source: the system's neighbour table, by rtnetlink(7). Where it cannot be read
/// every host counts as there. Hosts behind a router have no entry and count as
/// there, too. One thread uses it; no call waits.
class QD_Neighbours {
public:
    /// The pause between two datagrams to a host that does not answer.
    static constexpr std::chrono::seconds RETRY {1};
    /// As many such datagrams at most wait for an address.
    static constexpr int MAX_TRIALS = 8;

    QD_Neighbours();

    /// Reads the table again: some ten microseconds, more with hundreds of hosts.
    void refresh();

    /// Whether a host did not answer when the table was read last.
    bool any_missing() const { return !missing_.empty(); }

    /// Whether a datagram may be sent to that address (network byte order) now.
    bool may_send(uint32_t host, QD_Clock::Time now);

private:
    struct Missing {
        uint32_t host;
        bool asked; // the system waits for an answer, and a datagram with it
        QD_Clock::Time tried {};
    };

    void take(std::span<const char> messages, std::vector<Missing>& missing);
    QD_Clock::Time tried(uint32_t host) const;

    QD_Fd fd_;
    std::vector<Missing> missing_;
    bool complete_ = false; // the table's end has come
};
