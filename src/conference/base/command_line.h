// What the companion was asked for when it was started.
#pragma once

#include <span>
#include <string>
#include <vector>

/// A field that the command has no option for stays as it is here.
struct QD_Command_Line {
    enum Mode { HELP, RUN, DEMO, JOIN, HOST };

    Mode mode_ = HELP;
    std::vector<std::string> members_; // run: NAME or NAME@ADDRESS
    bool announced_ = true;
    int count_ = 3;           // demo: members, 2..8
    int seconds_ = 15;        // demo: how long; 0: until the user leaves
    int screen_width_ = 1280; // demo: where windows are laid out
    int screen_height_ = 1024;
    std::string conference_;           // join, host: "": the URL's, or "conference"
    std::string name_;                 // join, host: the member's, "": the user's login name
    bool takes_part_ = true;           // host
    std::string broker_;               // join: its URL
    std::string password_file_;        // join: "" for none
    std::string ca_file_;              // join: "" for the system's certificates
    int port_ = 0;                     // host: where the broker listens; 0: 8883 or any
    std::string directory_;            // "": a fresh one
    std::string client_;               // "": beside this program
    std::string before_end_;           // demo: a shell command, "": none
    std::vector<std::string> options_; // toolkit options for every client
};

/// Reads the arguments after the program's name. Returns "" or what is wrong
/// with them, a sentence; `line` is of no use then.
std::string qd_parse_command_line(std::span<const char* const> arguments, QD_Command_Line& line);

/// The help text.
extern const char* const QD_HELP;
