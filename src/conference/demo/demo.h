// The demo: who is in it, where their windows are, and what came of it.
#pragma once

#include "conference/base/command_line.h"
#include "conference/local/conference.h"

/// The members with their voices, recorders and window places. Voices that are
/// not in DIR/voices are made there, and what an earlier demo left in the
/// members' directories of `directory` is removed. Returns 0, -1 with a line on `out`.
int qd_prepare_demo(const QD_Command_Line& line, const std::string& directory,
    std::vector<QD_Member_Plan>& members, std::ostream& out);

/// Reads the logs and recordings of the members (ids 1, 2... in their order),
/// prints them as a table and leaves each voice heard in DIR/heard. `recorded`
/// tells whether sound was kept. Returns 0, -1 if somebody did not hear, or not
/// faithfully, what another one said.
int qd_report_demo(const std::string& directory, const std::vector<QD_Member_Plan>& members,
    bool recorded, std::ostream& out);
