// Who may call this program, and whether it calls others.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

/// Immutable once made. Any thread.
class QD_Call_Policy {
public:
    /// Everybody.
    QD_Call_Policy() : networks_ {{0, 0}} {}

    /// Reads "all", "none", or networks such as "10.1.0.0/16,192.168.7.20".
    /// Nothing if `text` is neither.
    static std::optional<QD_Call_Policy> parse(std::string_view text);

    /// What QD_CALLS says. Unset or empty: everybody; so, too, with a wrong
    /// value, which is told in one line on standard error.
    static QD_Call_Policy from_environment();

    /// Whether there are calls at all, from here and to here.
    bool any() const { return !networks_.empty(); }

    /// Whether this host (network byte order) may open a stream to us.
    bool admits(uint32_t host) const;

private:
    struct Network {
        uint32_t address; // host order
        uint32_t mask;
    };
    static std::optional<Network> parse_network(std::string_view text);

    std::vector<Network> networks_;
};
