// The members of one conference on this machine, and who is told of whom.
#pragma once

#include "conference/link/client.h"

#include <memory>
#include <ostream>

/// What holds for every member.
struct QD_Conference_Setup {
    std::string client;               // the program, an absolute path
    std::string directory;            // takes a directory for each member; exists, absolute
    std::vector<std::string> options; // toolkit options for every client
    bool announced = true;            // false: links alone, no member records
    QD_Bounds bounds;
};

/// One member to be. The rest is added by the conference.
struct QD_Member_Plan {
    std::string name;
    uint32_t address = 0;                 // 127.x.y.z as a number; 0: the first free from 127.0.0.2
    std::vector<std::string> options;     // further toolkit options
    std::vector<std::string> environment; // "NAME=value"
};

/// Reads "NAME" or "NAME@ADDRESS". Returns "" or what is wrong with it, a
/// sentence; `plan` is unchanged then.
std::string qd_parse_member(std::string_view text, QD_Member_Plan& plan);

/// Starts a client for each member, announces each member to all that have
/// registered, itself first, and withdraws it when it leaves or goes wrong.
/// Prints one line on each thing that happens. No operation waits; see QD_Client
/// for watch(), deadline() and serve(). One thread.
class QD_Conference {
public:
    /// `out` outlives the conference.
    QD_Conference(QD_Conference_Setup setup, std::ostream& out);

    /// Starts a member. Returns 0, or -1 with a line that says why not.
    int join(const QD_Member_Plan& plan);

    /// Ends a member's client. Returns 0, or -1 with a line if there is none.
    int leave(std::string_view name);

    /// Prints the members.
    void list() const;

    /// Ends all clients orderly; insist() lets none of them take its time.
    void end();
    void insist();

    /// Whether every client has ended.
    bool over() const { return members_.empty(); }

    /// Whether no client is still starting.
    bool settled() const;

    /// How many members could not be started or went wrong so far.
    int failures() const { return failures_; }

    /// The directory of the member `name`: home, current directory and log.txt.
    std::string directory_of(std::string_view name) const;

    void watch(std::vector<pollfd>& polled) const;
    QD_Clock::Time deadline() const;
    void serve();

private:
    struct Member {
        std::string name;
        std::string label; // name@address
        uint32_t address;
        uint32_t id;
        QD_Fd claim;
        std::unique_ptr<QD_Client> client;
        bool announced = false; // has joined and is known to the others
        bool reported = false;  // its trouble has been printed
    };

    Member* find(std::string_view name);
    int refuse(std::string_view whom, const std::string& why);
    int choose_address(Member& member, uint32_t wanted);
    QD_Launch launch_of(const Member& member, const QD_Member_Plan& plan) const;
    void announce(Member& newcomer);
    void withdraw(Member& leaver);
    void report(Member& member);

    const QD_Conference_Setup setup_;
    std::ostream& out_;
    std::vector<Member> members_;
    uint32_t last_id_ = 0;
    int failures_ = 0;
};
