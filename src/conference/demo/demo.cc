#include "conference/demo/demo.h"

#include "conference/demo/client_log.h"
#include "conference/demo/voice_match.h"
#include "conference/demo/wav_file.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>

namespace {

namespace fs = std::filesystem;

constexpr const char* NAMES[]
    = {"anna", "bernt", "chiara", "dmitri", "elena", "franz", "greta", "henri"};

// What a member's windows take on the screen, with their frames: the main
// window, the statistics beside it, then a picture of everybody.
constexpr int STATISTICS_X = 260;
constexpr int VIDEO_X = 860;
constexpr int VIDEO_WIDTH = 190;
constexpr int TILE_HEIGHT = 380;
constexpr int CASCADE = 40; // what a screenful of tiles is shifted by over the one below

constexpr double FAITHFUL = 0.98;

/// A tune of a few seconds, another one for each member.
QD_Voice tune(unsigned member)
{
    constexpr int NOTE = QD_SOUND_RATE / 5;
    QD_Voice voice;
    unsigned random = 12345 + member * 7919;
    for (int note = 0; note < 20; ++note) {
        random = random * 1103515245U + 12345U;
        const double pitch = 220 * std::pow(2, static_cast<double>(random >> 16 & 31) / 12);
        for (int i = 0; i < NOTE; ++i) {
            const double fade = 1 - static_cast<double>(i) / NOTE;
            voice.push_back(static_cast<int16_t>(
                12000 * fade * std::sin(2 * M_PI * pitch * i / QD_SOUND_RATE)));
        }
    }
    return voice;
}

std::string voice_of(const std::string& directory, const std::string& name)
{
    return directory + "/voices/" + name + ".wav";
}

std::string speaker_of(const std::string& directory, const std::string& name)
{
    return directory + "/" + name + "/speaker";
}

std::string place(int x, int y) { return "+" + std::to_string(x) + "+" + std::to_string(y); }

/// One tile below the other, then the next column; what the screen has no more
/// room for comes on top of the others.
void place_windows(const QD_Command_Line& line, int index, QD_Member_Plan& plan)
{
    const int tile_width = VIDEO_X + line.count * VIDEO_WIDTH;
    const int rows = std::max(1, line.screen_height / TILE_HEIGHT);
    const int columns = std::max(1, line.screen_width / tile_width);
    const int shift = index / (rows * columns) * CASCADE;
    const int x = index / rows % columns * tile_width + shift;
    const int y = index % rows * TILE_HEIGHT + shift;
    plan.options = {"-geometry", place(x, y)};
    for (const std::string& resource :
        {std::string("showStatistics: True"), "statWindow.geometry: " + place(x + STATISTICS_X, y),
            std::string("toggle.set: True"), "videoX: " + std::to_string(x + VIDEO_X),
            "videoY: " + std::to_string(y), "videoStepX: " + std::to_string(VIDEO_WIDTH)}) {
        plan.options.emplace_back("-xrm");
        plan.options.push_back("*" + resource);
    }
}

struct Heard {
    QD_Voice_Match match;
    fs::path file;
};

/// What a member's recorder took, by the index of the voice; the longest of each.
std::map<int, Heard> recordings(const std::string& speaker, std::span<const QD_Voice> voices)
{
    std::map<int, Heard> heard;
    std::error_code error;
    fs::directory_iterator files(speaker, error);
    for (; !error && files != fs::directory_iterator(); files.increment(error)) {
        QD_Voice sound;
        if (!files->path().filename().string().starts_with("port-")
            || qd_read_wav(files->path(), sound) < 0)
            continue;
        const QD_Voice_Match match = qd_match_voice(sound, voices);
        Heard& best = heard[match.voice];
        if (match.seconds > best.match.seconds)
            best = {match, files->path()};
    }
    return heard;
}

template <typename... Values> std::string formatted(const char* format, Values... values)
{
    char text[200];
    snprintf(text, sizeof text, format, values...);
    return text;
}

std::string count(int value) { return value < 0 ? "-" : std::to_string(value); }

std::string reception(const QD_Medium_Figures& figures, uint32_t id)
{
    const auto found = figures.from.find(id);
    if (found == figures.from.end())
        return formatted("%8s %5s %5s", "-", "-", "-");
    return formatted("%8d %5d %5d", found->second.received, found->second.lost, found->second.late);
}

std::string shown(const QD_Medium_Figures& figures, uint32_t id)
{
    const auto found = figures.from.find(id);
    return formatted(" %6s", count(found == figures.from.end() ? -1 : found->second.shown).c_str());
}

class Report {
public:
    Report(const std::string& directory, const std::vector<QD_Member_Plan>& members, bool recorded,
        std::ostream& out) :
        directory_(directory),
        members_(members),
        recorded_(recorded),
        out_(out)
    {
    }

    int print()
    {
        for (const QD_Member_Plan& member : members_) {
            std::ifstream log(directory_ + "/" + member.name + "/log.txt");
            figures_.push_back(qd_read_client_log(log));
            voices_.emplace_back();
            if (recorded_)
                qd_read_wav(voice_of(directory_, member.name), voices_.back());
        }
        out_ << "\nsound\n"
             << formatted("%-10s %6s  %-10s %8s %5s %5s", "member", "sent", "from", "received",
                    "lost", "late")
             << (recorded_ ? "   heard  likeness\n" : "\n");
        for (size_t i = 0; i < members_.size(); ++i)
            print_sound(i);
        print_pictures();
        out_.flush();
        return faithful_ ? 0 : -1;
    }

private:
    std::string line(size_t to, size_t from, const QD_Medium_Figures& figures, bool first) const
    {
        return formatted("%-10s %6s  %-10s ", first ? members_[to].name.c_str() : "",
                   first ? count(figures.sent).c_str() : "", members_[from].name.c_str())
            + reception(figures, static_cast<uint32_t>(from + 1));
    }

    void print_sound(size_t to)
    {
        std::map<int, Heard> heard;
        if (recorded_)
            heard = recordings(speaker_of(directory_, members_[to].name), voices_);
        bool first = true;
        for (size_t from = 0; from < members_.size(); ++from) {
            if (from == to)
                continue;
            out_ << line(to, from, figures_[to].audio, first);
            first = false;
            if (recorded_)
                print_heard(to, from, heard[static_cast<int>(from)]);
            out_ << "\n";
        }
    }

    void print_heard(size_t to, size_t from, const Heard& heard)
    {
        if (heard.match.correlation <= FAITHFUL)
            faithful_ = false;
        if (heard.file.empty()) {
            out_ << formatted("%8s  %8s", "nothing", "-");
            return;
        }
        out_ << formatted("%6.1f s  %8.4f", heard.match.seconds, heard.match.correlation);
        const fs::path kept = fs::path(directory_) / "heard"
            / (members_[to].name + "-hears-" + members_[from].name + ".wav");
        std::error_code error;
        fs::create_directories(kept.parent_path(), error);
        fs::copy_file(heard.file, kept, fs::copy_options::overwrite_existing, error);
        if (error)
            out_ << "  " << kept.string() << ": " << error.message();
    }

    void print_pictures()
    {
        bool any = false;
        for (const QD_Client_Figures& figures : figures_)
            any = any || figures.video.sent >= 0;
        if (!any)
            return;
        out_ << "\npictures\n"
             << formatted("%-10s %6s  %-10s %8s %5s %5s %6s\n", "member", "sent", "from",
                    "received", "lost", "late", "shown");
        for (size_t to = 0; to < members_.size(); ++to) {
            bool first = true;
            for (size_t from = 0; from < members_.size(); ++from) {
                if (from == to)
                    continue;
                out_ << line(to, from, figures_[to].video, first)
                     << shown(figures_[to].video, static_cast<uint32_t>(from + 1)) << "\n";
                first = false;
            }
        }
    }

    const std::string& directory_;
    const std::vector<QD_Member_Plan>& members_;
    const bool recorded_;
    std::ostream& out_;
    std::vector<QD_Client_Figures> figures_;
    std::vector<QD_Voice> voices_;
    bool faithful_ = true;
};

}

int qd_prepare_demo(const QD_Command_Line& line, const std::string& directory,
    std::vector<QD_Member_Plan>& members, std::ostream& out)
{
    std::error_code error;
    fs::create_directories(directory + "/voices", error);
    fs::remove_all(directory + "/heard", error);
    for (int i = 0; i < line.count; ++i) {
        QD_Member_Plan plan;
        plan.name = NAMES[i];
        place_windows(line, i, plan);

        const std::string voice = voice_of(directory, plan.name);
        const std::string speaker = speaker_of(directory, plan.name);
        if (!fs::exists(voice) && qd_write_wav(voice, tune(static_cast<unsigned>(i))) < 0) {
            out << voice << ": cannot be written" << std::endl;
            return -1;
        }
        fs::remove_all(speaker, error);
        fs::create_directories(speaker, error);
        plan.environment.push_back("QD_MIC=file:" + voice);
        if (line.seconds > 0)
            plan.environment.push_back("QD_SPEAKER=file:" + speaker);
        else if (i > 0) // the first member's loudspeaker is the user's
            plan.environment.push_back("QD_SPEAKER=null");
        if (getenv("QD_CAMERA") == nullptr) // a real one serves one client only
            plan.environment.push_back(
                "QD_CAMERA=testcard:" + std::to_string(i * 360 / line.count));
        members.push_back(std::move(plan));
    }
    return 0;
}

int qd_report_demo(const std::string& directory, const std::vector<QD_Member_Plan>& members,
    bool recorded, std::ostream& out)
{
    return Report(directory, members, recorded, out).print();
}
