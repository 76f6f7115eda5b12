// Views that keep what they are told.
#pragma once

#include "media/user_data.h"
#include "signalling/member.h"
#include "signalling/views.h"

#include <algorithm>
#include <atomic>
#include <optional>
#include <string>
#include <vector>

/// Takes the first equal text out.
inline void qd_drop(std::vector<std::string>& from, const std::string& text)
{
    const auto at = std::find(from.begin(), from.end(), text);
    if (at != from.end())
        from.erase(at);
}

struct QD_Fake_Stat_View : QD_Stat_View {
    std::vector<std::string> users;
    std::vector<std::optional<UserData>> audio, video; // as they were set
    std::string selected;

    void addToUsersList(const char* text) override { users.emplace_back(text); }
    void delFromUsersList(const char* text) override { qd_drop(users, text); }
    void setAudioData(const UserData* figures) override { audio.push_back(copy(figures)); }
    void setVideoData(const UserData* figures) override { video.push_back(copy(figures)); }
    const char* getSelectedPart() override { return selected.c_str(); }

private:
    static std::optional<UserData> copy(const UserData* figures)
    {
        return figures ? std::optional(*figures) : std::nullopt;
    }
};

struct QD_Fake_Main_View : QD_Main_View, QD_Stat_Window_View {
    QD_Fake_Stat_View stat;
    std::vector<std::string> statuses;
    std::vector<std::string> users;
    std::vector<int> buttons;       // as they were switched
    std::vector<std::string> chats; // "id/kind: text"
    std::atomic<int> speaker_level = -1;
    std::atomic<int> mic_level = -1;

    void setStatus(const char* text) override { statuses.emplace_back(text); }
    void addUserToList(const char* text) override { users.emplace_back(text); }
    void delUserFromList(const char* text) override { qd_drop(users, text); }
    void activateButtons(char on) override { buttons.push_back(on); }
    void chatMessage(QD_Member* from, int kind, const char* text, int len) override
    {
        chats.push_back(std::to_string(from->get_id()) + "/" + std::to_string(kind) + ": "
            + std::string(text, static_cast<size_t>(len)));
    }
    void setSpeakerLevel(int level) override { speaker_level = level; }
    void setMicLevel(int level) override { mic_level = level; }
    QD_Stat_Window_View* getStatWnd() override { return this; }
    QD_Stat_View* getStatForm() override { return &stat; }
};

/// Makes windows that write down what becomes of them.
struct QD_Fake_Displays : QD_Display_Factory {
    std::vector<std::string> log;
    int open = 0;

    struct Window : QD_Display_View {
        QD_Fake_Displays& all;
        explicit Window(QD_Fake_Displays& displays) : all(displays) { ++all.open; }
        ~Window() override
        {
            --all.open;
            all.log.emplace_back("closed");
        }
        void show() override { all.log.emplace_back("shown"); }
        void init_surface() override { all.log.emplace_back("prepared"); }
        void draw(const unsigned char* picture) override
        {
            all.log.push_back("drew " + std::to_string(picture[0]));
        }
        void setStatistics(const char* first, const char* second) override
        {
            all.log.push_back(std::string(first) + "|" + second);
        }
    };
    std::unique_ptr<QD_Display_View> make_display(const char* title) override
    {
        log.push_back(std::string("made ") + title);
        return std::make_unique<Window>(*this);
    }
};
