#include "conference/base/command_line.h"

#include <gtest/gtest.h>

namespace {

using Arguments = std::vector<const char*>;

TEST(CommandLine, SaysWhatIsWrong)
{
    const struct {
        Arguments arguments;
        const char* trouble;
    } cases[] = {
        {{}, "say what to do: run, demo, join, host or --help"},
        {{"run"}, "name at least one member"},
        {{"demo", "--unannounced"}, "--unannounced is not an option of this command"},
        {{"demo", "--members", "3x"}, "--members cannot be \"3x\""},
        {{"run", "--fast", "a"}, "there is no option --fast"},
        {{"join", "anna"}, "say where the conference is: --broker URL"},
    };
    for (const auto& c : cases) {
        QD_Command_Line line;
        EXPECT_EQ(qd_parse_command_line(c.arguments, line), c.trouble);
    }
}

}
