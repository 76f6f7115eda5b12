#include "conference/command_line.h"

#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

using Arguments = std::vector<const char*>;

TEST(CommandLine, ReadsWhatWasAsked)
{
    QD_Command_Line run;
    EXPECT_EQ(qd_parse_command_line(Arguments {"run", "--unannounced", "anna", "--dir=x y",
                                        "bo@127.0.0.9", "--", "-xrm", "*a: b", "--members"},
                  run),
        "");
    EXPECT_EQ(run.mode_, QD_Command_Line::RUN);
    EXPECT_FALSE(run.announced_);
    EXPECT_EQ(run.directory_, "x y");
    EXPECT_THAT(run.members_, ElementsAre("anna", "bo@127.0.0.9"));
    EXPECT_THAT(run.options_, ElementsAre("-xrm", "*a: b", "--members"));
}

TEST(CommandLine, SaysWhatIsWrong)
{
    struct {
        Arguments arguments;
        const char* trouble;
    } const cases[] = {
        {{}, "say what to do: run, demo, join, host or --help"},
        {{"walk"}, "there is no command \"walk\""},
        {{"run"}, "name at least one member"},
        {{"demo", "anna"}, "the demo names its members itself"},
        {{"run", "--seconds", "3", "anna"}, "--seconds is not an option of this command"},
        {{"demo", "--unannounced"}, "--unannounced is not an option of this command"},
        {{"demo", "--members"}, "--members needs a value"},
        {{"demo", "--members=9"}, "--members cannot be \"9\""},
        {{"demo", "--members", "3x"}, "--members cannot be \"3x\""},
        {{"demo", "--screen", "1280"}, "--screen cannot be \"1280\""},
        {{"run", "--unannounced=yes", "a"}, "--unannounced takes no value"},
        {{"run", "--fast", "a"}, "there is no option --fast"},
        {{"join", "anna"}, "say where the conference is: --broker URL"},
        {{"join", "daily", "anna", "--broker", "mqtt://h"},
            "name one conference; --name says what you are called"},
        {{"host", "--port", "65536"}, "--port cannot be \"65536\""},
    };
    for (const auto& c : cases) {
        QD_Command_Line line;
        EXPECT_EQ(qd_parse_command_line(c.arguments, line), c.trouble);
    }
    QD_Command_Line line;
    EXPECT_EQ(qd_parse_command_line(Arguments {"run", "anna", "--help"}, line), "");
    EXPECT_EQ(line.mode_, QD_Command_Line::HELP);
}

}
