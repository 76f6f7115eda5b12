// The end of a process whose threads still run.
#pragma once

/// Has `save` called once when the process ends without its owner having had the
/// time to: by qd_end_process() or by exit(). It runs on the thread that ends the
/// process, which may hold any lock but those that `save` takes. Null: no more.
void qd_save_at_end(void (*save)());

/// Saves, writes out what was printed, and ends the process without destroying
/// anything that its threads use. For every end but the orderly one. Any thread.
[[noreturn]] void qd_end_process(int status);

/// From now on the process ends as by qd_end_process(status) unless it has ended
/// by itself within so many seconds, whatever holds it up.
void qd_end_within(int seconds, int status);
