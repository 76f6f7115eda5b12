// The commands given while a conference runs.
#pragma once

#include "conference/conference.h"

#include <string>

/// Takes what was typed, in whatever pieces it comes, and carries out one
/// command a line. One thread.
class QD_Commands {
public:
    /// A longer line is refused as a whole.
    static constexpr size_t MAX_LINE = 256;

    /// Both outlive this object.
    QD_Commands(QD_Conference& conference, std::ostream& out) : conference_(conference), out_(out)
    {
    }

    void take(std::string_view typed);

private:
    void execute(std::string_view line);

    QD_Conference& conference_;
    std::ostream& out_;
    std::string line_;
    bool too_long_ = false;
};
