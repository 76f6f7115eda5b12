#include "tests/soak/member.h"

#include "platform/base/bytes.h"

#include <regex>
#include <sstream>

namespace {

constexpr auto PATIENCE = std::chrono::seconds(60);

// Where numbers stand in the options file.
constexpr size_t CONNECTION_AT = 0;
constexpr size_t RATE_AT = 272;

/// All that is printed when all is well; anything else is an error.
const std::regex& harmless()
{
    static const std::regex all(
        R"((\S+ has (joined|left)|the broker \S+ is (back|lost: .*)|[0-9]+  \S+( +\(starting\))?)"
        R"(|guest\S+ (of \S+ is not announced|waits): .* address( of another member)?)"
        R"(|[0-9]+ members?|QD_(Audio|Video)App: sent [0-9]+ packets)"
        R"(|QD_Session_Control: (audio|video) .*|Hidding stat window))");
    return all;
}

/// The first line that should not be there, "" if there is none.
std::string first_error(const std::string& printed, const std::string& cut_off)
{
    std::istringstream lines(printed);
    for (std::string line; std::getline(lines, line);) {
        // Whoever leaves while the broker is away is missed; of those who stay nobody is, but for
        // one.
        const bool gone = line.find(" is gone") != std::string::npos
            && (line.starts_with("guest") || line.find("@" + cut_off) != std::string::npos);
        if (!gone && !std::regex_match(line, harmless()))
            return line;
    }
    return "";
}

}

// No window lies over the options, so that what changes there is what a key has done.
QD_Soak_Member::QD_Soak_Member(const Part& part, const std::string& broker) :
    label_(part.name + "@" + part.address),
    cut_off_(part.cut_off)
{
    start("join",
        {"soak", "--name", part.name, "--broker", "mqtt://" + broker, "--", "-xrm",
            "*toggle.set: True", "-xrm", "*videoX: 400", "-xrm", "*videoY: 0", "-xrm",
            "*optionsWindow.geometry: +0+0", "-geometry", "+0+500"},
        {{"HOME", file("")}, {"QD_MIC", part.mic}, {"QD_SPEAKER", part.speaker},
            {"QD_CAMERA", "testcard"}},
        part.at);
}

bool QD_Soak_Member::held(bool held, const std::string& what)
{
    if (!held && trouble_.empty())
        trouble_ = label_ + ": " + what;
    return held;
}

bool QD_Soak_Member::comes()
{
    if (!held(says(label_ + " has joined\n"), "does not join: " + said()))
        return false;
    const std::string pid = std::to_string(process().pid());
    std::istringstream(qd_read_file("/proc/" + pid + "/task/" + pid + "/children")) >> client_;
    main_.emplace(client_);
    other_.emplace(client_);
    return held(
        main_->look_at("Quendal"), "no main window: " + said() + qd_read_file(file("log.txt")));
}

void QD_Soak_Member::leave(bool by_window)
{
    if (by_window) {
        turn_to_main();
        QD_Person::type({"ctrl+q"});
    } else {
        process().tell("end\n");
    }
    const std::optional<int> status = process().wait(PATIENCE);
    held(status.has_value(), "does not end");
    held(status == 0, "ends with a status other than 0: " + said());
    read_everything_printed();
}

void QD_Soak_Member::read_everything_printed()
{
    for (const char* name : {"log.txt", "said"}) {
        const std::string line = first_error(qd_read_file(file(name)), cut_off_);
        held(line.empty(), std::string(name) + " has the line: " + line);
        if (line.find("Sanitizer") != std::string::npos)
            printf("%s\n", qd_read_file(file(name)).c_str());
    }
}

/// Gives the keyboard to the main window. A window manager that is late takes it away once more
/// when another window has gone.
void QD_Soak_Member::turn_to_main()
{
    int steady = 0;
    const auto has_stayed = [&] {
        if (qd_output("xdotool getwindowfocus -f") != main_->window() + "\n") {
            steady = 0;
            main_->focus();
        }
        return ++steady > 3;
    };
    held(qd_wait_for(has_stayed, PATIENCE), "the main window does not keep the keyboard");
}

bool QD_Soak_Member::open(const char* keys, const char* title)
{
    turn_to_main();
    QD_Person::type({keys});
    return held(other_->look_at(title), std::string("no window ") + title);
}

void QD_Soak_Member::close(const char* key, const char* title)
{
    other_->press(key);
    held(other_->loses(title), std::string("the window stays: ") + title);
}

std::string QD_Soak_Member::look() const
{
    return qd_output("import -window " + other_->window() + " -depth 8 ppm:-");
}

/// Presses a key in the window that is open, and waits for what it does there.
bool QD_Soak_Member::press(const char* key)
{
    const std::string before = look();
    other_->press(key);
    return held(qd_wait_for([&] { return look() != before; }, PATIENCE),
        std::string("nothing happens on pressing ") + key);
}

/// A number of the options file; 0 if there is none yet.
int QD_Soak_Member::option(size_t offset) const
{
    const std::string bytes = qd_read_file(file(".qd.cfg"));
    if (bytes.size() < offset + 4)
        return 0;
    return static_cast<int>(qd_get_u32(reinterpret_cast<const uint8_t*>(&bytes[offset])));
}

bool QD_Soak_Member::option_becomes(size_t offset, int value, const char* what)
{
    return held(qd_wait_for([&] { return option(offset) == value; }, PATIENCE),
        std::string(what) + " is not applied");
}

void QD_Soak_Member::choose_connection(int connection)
{
    if (!open("ctrl+o", "Options"))
        return;
    other_->focus();
    if (!press("Tab") || !press("space")) // the menu is open
        return;
    std::vector<std::string> keys {"xdotool", "key"};
    const int way = connection - option(CONNECTION_AT);
    keys.insert(keys.end(), static_cast<size_t>(std::abs(way)), way > 0 ? "Down" : "Up");
    keys.emplace_back("Return");
    qd_run(keys);
    if (!press("Tab") || !press("Tab"))
        return;
    qd_run({"xdotool", "key", "space"}); // Apply
    option_becomes(CONNECTION_AT, connection, "the connection");
    close("Escape", "Options");
}

void QD_Soak_Member::choose_rate(bool fast)
{
    if (!open("ctrl+o", "Options") || !press("Right") || !press("Right") || !press("Tab"))
        return;
    other_->press(fast ? "End" : "Home");
    close("Return", "Options");
    option_becomes(RATE_AT, fast ? 10 : 1, "the frame rate");
}

void QD_Soak_Member::switch_camera()
{
    turn_to_main();
    if (!std::exchange(at_camera_, true))
        QD_Person::type({"Tab", "Tab", "Tab"}); // from the list of users; Call is grey
    QD_Person::type({"space"});
}

void QD_Soak_Member::move_cutoff()
{
    turn_to_main();
    QD_Person::type({"Tab", "Tab", "Tab", "Right", "Right", "Left", "Left"});
    QD_Person::type({"shift+Tab", "shift+Tab", "shift+Tab"});
}

void QD_Soak_Member::look_at_statistics()
{
    if (open("ctrl+s", "Statistics"))
        close("Escape", "Statistics");
}

void QD_Soak_Member::put_away(const std::string& title)
{
    if (!held(other_->look_at(title), "no window " + title))
        return;
    const std::string window = other_->window();
    other_->focus();
    QD_Person::type({"alt+F4"});
    if (held(other_->loses(title), "the window stays: " + title)) {
        qd_run({"xdotool", "windowmap", window});
        held(other_->look_at(title), "the window does not come back: " + title);
    }
}

bool QD_Soak_Member::lists(size_t members)
{
    const std::string wanted = "\n" + std::to_string(members) + " members\n";
    const auto is_listed = [&] {
        const size_t before = said().size();
        process().tell("list\n");
        qd_wait_for([&] { return said().find(" member", before) != std::string::npos; });
        return said().find(wanted, before) != std::string::npos;
    };
    return held(qd_wait_for(is_listed, PATIENCE),
        "does not list " + std::to_string(members) + " members: " + said());
}

size_t QD_Soak_Member::count_said(const std::string& text) const
{
    size_t count = 0;
    const std::string all = said();
    for (size_t at = 0; (at = all.find(text, at)) != std::string::npos; at += text.size())
        ++count;
    return count;
}
