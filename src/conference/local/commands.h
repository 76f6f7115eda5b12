// The commands given while a conference runs.
#pragma once

#include "conference/base/line_reader.h"
#include "conference/local/conference.h"

/// Takes what was typed, in whatever pieces it comes, and carries out one
/// command a line. One thread.
class QD_Commands {
public:
    /// Both outlive this object.
    QD_Commands(QD_Conference& conference, std::ostream& out) :
        conference_(conference),
        out_(out),
        lines_(out, [this](std::string_view line) { execute(line); })
    {
    }

    void take(std::string_view typed) { lines_.take(typed); }

private:
    void execute(std::string_view line);

    QD_Conference& conference_;
    std::ostream& out_;
    QD_Line_Reader lines_;
};
