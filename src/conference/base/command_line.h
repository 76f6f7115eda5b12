// What the companion was asked for when it was started.
#pragma once

#include <span>
#include <string>
#include <vector>

/// A field that the command has no option for stays as it is here.
struct QD_Command_Line {
    enum Mode { HELP, RUN, DEMO, JOIN, HOST };

    Mode mode = HELP;
    std::vector<std::string> members; // run: NAME or NAME@ADDRESS
    bool announced = true;
    int count = 3;           // demo: members, 2..8
    int seconds = 15;        // demo: how long; 0: until the user leaves
    int screen_width = 1280; // demo: where windows are laid out
    int screen_height = 1024;
    std::string conference;           // join, host: "": the URL's, or "conference"
    std::string name;                 // join, host: the member's, "": the user's login name
    bool takes_part = true;           // host
    std::string broker;               // join: its URL
    std::string password_file;        // join: "" for none
    std::string ca_file;              // join: "" for the system's certificates
    int port = 0;                     // host: where the broker listens; 0: 8883 or any
    std::string directory;            // "": a fresh one
    std::string client;               // "": beside this program
    std::string before_end;           // demo: a shell command, "": none
    std::vector<std::string> options; // toolkit options for every client
};

/// Reads the arguments after the program's name. Returns "" or what is wrong
/// with them, a sentence; `line` is of no use then.
std::string qd_parse_command_line(std::span<const char* const> arguments, QD_Command_Line& line);

/// The help text.
extern const char* const QD_HELP;
