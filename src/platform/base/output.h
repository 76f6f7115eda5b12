// Standard output and standard error that never make the program wait.
#pragma once

/// Gives stdout and stderr a queue of QD_OUTPUT_QUEUE bytes each (one for both
/// where they lead to the same file) in front of their descriptors, which a
/// thread empties: printing never waits, even if they lead to a pipe that is not
/// read. What finds the queue full is dropped, and a line says how much once
/// there is room. The descriptors themselves, which child processes inherit and
/// other processes share, stay as they are. Called first in main(), once.
void qd_queue_output();
constexpr unsigned long QD_OUTPUT_QUEUE = 256 << 10;

/// Writes out what was printed; waits a second at most for who reads it. Also
/// done by exit(). Any thread.
void qd_flush_output();
