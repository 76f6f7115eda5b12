// One person's part in a conference across machines: the agent, the client, and
// the loop that drives both.
#pragma once

#include "conference/base/line_reader.h"
#include "conference/broker/agent.h"
#include "conference/link/client.h"

#include <ostream>

/// Who takes part, where, and with which client.
struct QD_Join_Setup {
    QD_Broker_Url broker;
    std::string name;                 // the member's
    uint32_t address = 0;             // what the client takes as its own, as a number
    std::string client;               // the program, an absolute path
    std::string directory;            // the client's current directory, takes log.txt; exists
    std::vector<std::string> options; // toolkit options for the client
    QD_Bounds bounds;
    QD_Membership_Times times;
};

/// Joins, starts the client once the conference lets the member in, tells it of
/// everybody and everybody of it, and leaves when the client ends. SIGINT,
/// SIGTERM and SIGHUP end the client; a second one does not wait for it. Takes
/// the commands "list" and "end". Prints one line on each thing that happens.
/// The signals are blocked from the construction on. One thread.
class QD_Join : private QD_Conference_Events {
public:
    /// Commands are read from `input` until it ends. `out` outlives this object.
    QD_Join(QD_Join_Setup setup, std::ostream& out, int input);

    /// Returns when the member has left: 0, or -1 if something went wrong.
    int run();

    /// Whether it was told to end, other than by the client's own end.
    bool told_to_end() const { return told_to_end_; }

private:
    void admitted(const QD_Presence& self) override;
    void came(const QD_Presence& member) override;
    void went(const QD_Presence& member, const char* how) override;
    void say(const std::string& whom, const std::string& what) override;
    void failed(const std::string& why) override;

    void serve();
    void end();
    void read_signal();
    void read_input();
    void execute(std::string_view line);
    void list() const;

    const QD_Join_Setup setup_;
    std::ostream& out_;
    QD_Fd signals_;
    int input_; // -1 once it has ended
    QD_Line_Reader lines_;
    QD_Client client_;
    QD_Agent agent_;
    bool started_ = false;
    bool linked_ = false;
    bool ending_ = false;
    bool told_to_end_ = false;
    bool trouble_ = false;
};
