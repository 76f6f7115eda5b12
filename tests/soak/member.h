// A member of the conference: companion, client, and the person at the client's windows.
#pragma once

#include "tests/support/client_under_test.h"
#include "tests/support/seat.h"

/// What was to happen and did not is kept as a trouble; the first one is the one to read.
class QD_Soak_Member : public QD_Seat {
public:
    struct Part {
        std::string name; // not to be used twice
        std::string address;
        std::string mic;
        std::string speaker;
        std::vector<std::string> at; // what runs the command that follows it on its host
        std::string cut_off;         // the address of whom the others may miss
    };

    /// Joins by the broker at that place, with its camera on.
    QD_Soak_Member(const Part& part, const std::string& broker);

    /// Whether it is in, and its window on the screen.
    bool comes();

    /// Leaves, by its companion's keyboard or by its window's, and looks at what was printed.
    void leave(bool by_window);

    /// Chooses a connection (0..3) in the options and applies it, then cancels the dialog.
    void choose_connection(int connection);

    /// Sets the frame rate to 1 or 10 pictures a second, and presses OK.
    void choose_rate(bool fast);

    void switch_camera();
    void move_cutoff();
    void look_at_statistics();

    /// Makes the window of that title an icon, by the window manager's key, and has it back.
    void put_away(const std::string& title);

    /// Whether so many members are listed before long.
    bool lists(size_t members);

    /// How often the companion has said so.
    size_t count_said(const std::string& text) const;

    const std::string& label() const { return label_; }
    pid_t client() const { return client_; }
    const std::string& trouble() const { return trouble_; }

private:
    bool held(bool held, const std::string& what);
    void turn_to_main();
    bool open(const char* keys, const char* title);
    void close(const char* key, const char* title);
    bool press(const char* key);
    std::string look() const;
    int option(size_t offset) const;
    bool option_becomes(size_t offset, int value, const char* what);
    void read_everything_printed();

    const std::string label_;
    const std::string cut_off_;
    pid_t client_ = 0;
    std::optional<QD_Person> main_;
    std::optional<QD_Person> other_; // at any other window
    bool at_camera_ = false;         // where the main window's keys go
    std::string trouble_;
};
