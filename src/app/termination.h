// Being asked by the system to end.
#pragma once

/// Turns SIGTERM, SIGINT and SIGHUP into the end of the session, just as when
/// the framework ends it, unless the process was started with them ignored, and
/// lets SIGPIPE and the end of child processes pass without effect. Programs
/// started from here have their signals by default and unblocked. One per
/// process, made before the threads.
class QD_Termination {
public:
    QD_Termination();

    /// Whether the process is to end. Any thread.
    bool requested() const;

    /// Readable from then on, for waiting beside other descriptors.
    int get_handle() const;
};

/// Does nothing: handles signals that are to pass without effect.
void thread_killed(int signal);
