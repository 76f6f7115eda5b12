// The application's side of the framework link: events over a local TCP stream.
#pragma once

/// One message on the link: 32-bit type, 32-bit length, then the payload; the
/// integers big-endian.
struct Event {
    /// The longest payload that is taken from or given to the link.
    static constexpr int MAX_LEN = 65536;

    /// Sent by the application for the framework to interpret.
    static constexpr int APP_MESSAGE = 30;
    /// Sent by the framework; returned to it unchanged.
    static constexpr int ECHO = 51;

    int type;
    int len;    // bytes in data, 0..MAX_LEN
    char* data; // owned
};

// A failure of the link is the end of the process (qd_end_process): with status 0
// where starting or writing failed, 1 where reading failed or the framework has
// closed the link; perror() names it except for the closed link. What is not
// whole within 5 s in all has failed. One thread uses a link.

/// Checks the launch arguments (program, AID, SID, AT, port), connects to the
/// port on this machine and registers. Returns the connected descriptor.
int registerApp(int argc, char** argv);

/// Reads exactly `n` bytes.
void readAll(int fd, void* buf, unsigned n);

void sendEvent(int fd, const Event* e);

/// Reads one whole event and returns an echo request to its sender. A length
/// below 0 or above MAX_LEN ends the process as a failed read does.
/// The caller destroys the result.
Event* receiveEvent(int fd);

/// An event with a copy of `len` bytes of `data`.
Event* createEvent(int type, int len, const char* data);
void destroyEvent(Event* e);

int getType(const Event* e);
int getLen(const Event* e);

/// A copy of the payload, not terminated; the caller releases it with delete[].
char* getData(const Event* e);
