#include "platform/base/output.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace {

constexpr int LINES = 100'000;
constexpr size_t LONGEST = sizeof "line 99999\n";

// Reads up to the line that ends so.
std::string read_until(int fd, const std::string& end)
{
    std::string text;
    char c = 0;
    while (!text.ends_with(end) && ::read(fd, &c, 1) == 1)
        text += c;
    return text;
}

// Prints far more than fits while nothing is read, then reads it. Whether every byte is either
// there, in order, or counted as dropped.
bool all_is_there_or_counted()
{
    int pipe[2] = {-1, -1};
    if (::pipe(pipe) != 0 || ::dup2(pipe[1], STDOUT_FILENO) < 0)
        return false;
    qd_queue_output();
    std::string printed;
    for (int i = 0; i < LINES; ++i) {
        const std::string line = "line " + std::to_string(i) + "\n";
        fputs(line.c_str(), stdout);
        printed += line;
    }
    const std::string note = " bytes were not read in time]\n";
    const std::string read = read_until(pipe[0], note);
    const size_t kept = read.rfind('[');
    puts("later");
    // The line that no longer fits can come before the thread has written anything, or after it
    // has taken a whole queue and the pipe has its part of it.
    return kept > QD_OUTPUT_QUEUE - LONGEST && kept < 2 * QD_OUTPUT_QUEUE + 80'000
        && printed.starts_with(read.substr(0, kept))
        && read.substr(kept + 1) == std::to_string(printed.size() - kept) + note
        && read_until(pipe[0], "later\n") == "later\n";
}

}

TEST(OutputDeathTest, APipeThatIsNotReadHoldsNobodyUpAndLosesNothingUntold)
{
    EXPECT_EXIT(_exit(all_is_there_or_counted() ? 0 : 1), testing::ExitedWithCode(0), "");
}
