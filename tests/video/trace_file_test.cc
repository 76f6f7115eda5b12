#include "video/trace_file.h"

#include "tests/support/temp_dir.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <vector>

TEST(TraceFile, WithoutAFileLinesAreDropped)
{
    QD_Trace_File trace("/nowhere/at/all");
    trace.id_line(1);
    trace.line(2);
}

TEST(TraceFile, ALineIsOnTheDiskAtOnceAndCostsLittle)
{
    using Microseconds = std::chrono::duration<double, std::micro>;
    const QD_Temp_Dir dir;
    QD_Trace_File trace((dir / "log").c_str());
    std::vector<double> costs;
    for (int i = 0; i < 1001; ++i) {
        const auto start = std::chrono::steady_clock::now();
        trace.line(i);
        costs.push_back(Microseconds(std::chrono::steady_clock::now() - start).count());
    }
    EXPECT_TRUE(qd_read_file(dir / "log").ends_with("\n999\n1000\n")) << "though it is still open";
    std::nth_element(costs.begin(), costs.begin() + 500, costs.end());
    EXPECT_LT(costs[500], std::string(QD_SANITIZED).empty() ? 10 : 100) << "microseconds";
    RecordProperty("microseconds", std::to_string(costs[500]));
}
