// The figures a client prints when it ends.
#pragma once

#include <cstdint>
#include <istream>
#include <map>
#include <string>

/// One medium at one client: what it sent, and what it received from each
/// member id. A frame counts as received from the second on: the first starts
/// the count.
struct QD_Medium_Figures {
    struct Reception {
        int received = 0;
        int lost = 0;
        int late = 0;
        int shown = -1; // pictures drawn; -1: not said, as for sound
    };
    int sent = -1; // -1: the client did not say
    std::map<uint32_t, Reception> from;
};

struct QD_Client_Figures {
    QD_Medium_Figures audio;
    QD_Medium_Figures video;
};

/// Reads the lines that carry figures; all others are passed over.
QD_Client_Figures qd_read_client_log(std::istream& log);
