#include "conference/local/commands.h"
#include "tests/fuzz/fuzz.h"

#include <algorithm>
#include <sstream>

// What is typed, in pieces. Nothing can be started.
void qd_fuzz(QD_Fuzz_Input input)
{
    QD_Conference_Setup setup;
    setup.client = "/proc/none";
    setup.directory = "/proc/none";
    std::ostringstream out;
    QD_Conference conference(setup, out);
    QD_Commands commands(conference, out);
    ptrdiff_t lines = 0;
    while (!input.empty()) {
        const std::string typed = input.chunk();
        commands.take(typed);
        lines += std::ranges::count(typed, '\n');
    }
    const std::string said = out.str();
    qd_require(std::ranges::count(said, '\n') <= lines); // one answer to a line, if any
    qd_require(conference.over());
}
