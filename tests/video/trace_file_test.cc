#include "video/trace_file.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

TEST(TraceFile, EveryLineIsInTheFileAtOnce)
{
    const QD_Temp_Dir dir;
    qd_write_file(dir.file("log"), "old\n");
    QD_Trace_File trace(dir.file("log").c_str());
    trace.id_line(-3);
    EXPECT_EQ(qd_read_file(dir.file("log")), "id: -3\n");
    trace.line(31);
    EXPECT_EQ(qd_read_file(dir.file("log")), "id: -3\n31\n");
}

TEST(TraceFile, WithoutAFileLinesAreDropped)
{
    QD_Trace_File trace("/nowhere/at/all");
    trace.id_line(1);
    trace.line(2);
}
