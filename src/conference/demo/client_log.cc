#include "conference/demo/client_log.h"

#include <cstdio>

namespace {

struct Medium {
    const char* sent;     // format of the line on what was sent
    const char* received; // beginning of the lines on what was received
    QD_Medium_Figures QD_Client_Figures::*figures;
};

constexpr Medium MEDIA[] = {
    {"QD_AudioApp: sent %d packets", "QD_Session_Control: audio ", &QD_Client_Figures::audio},
    {"QD_VideoApp: sent %d packets", "QD_Session_Control: video ", &QD_Client_Figures::video},
};

void read_line(const std::string& line, const Medium& medium, QD_Medium_Figures& figures)
{
    if (sscanf(line.c_str(), medium.sent, &figures.sent) == 1)
        return;
    // Before the id stands a display string, in which anything may occur.
    const size_t id_at = line.rfind(", id=");
    QD_Medium_Figures::Reception from;
    uint32_t id = 0;
    if (line.starts_with(medium.received) && id_at != std::string::npos
        && sscanf(&line[id_at], ", id=%u: received %d, lost %d, late %d, shown %d", &id,
               &from.received, &from.lost, &from.late, &from.shown)
            >= 4)
        figures.from[id] = from;
}

}

QD_Client_Figures qd_read_client_log(std::istream& log)
{
    QD_Client_Figures figures;
    std::string line;
    while (std::getline(log, line)) {
        for (const Medium& medium : MEDIA)
            read_line(line, medium, figures.*medium.figures);
    }
    return figures;
}
