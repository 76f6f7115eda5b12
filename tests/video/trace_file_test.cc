#include "video/trace_file.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

TEST(TraceFile, EveryLineIsInTheFileAtOnceAndCheap)
{
    const QD_Temp_Dir dir;
    qd_write_file(dir.file("log"), "old\n");
    QD_Trace_File trace(dir.file("log").c_str());
    trace.id_line(-3);
    EXPECT_EQ(qd_read_file(dir.file("log")), "id: -3\n");
    trace.line(31);
    EXPECT_EQ(qd_read_file(dir.file("log")), "id: -3\n31\n");

    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < 1000; ++i)
        trace.line(i);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(500))
        << "no line waits for the disk";

    QD_Trace_File nowhere("/nowhere/at/all"); // its lines are dropped
    nowhere.id_line(1);
    nowhere.line(2);
}
