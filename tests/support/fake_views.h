// Views that keep what they are told.
#pragma once

#include "signalling/member.h"
#include "signalling/views.h"

#include <atomic>
#include <string>
#include <vector>

/// The main form, and the statistics.
struct QD_Fake_Main_View : QD_Main_View, QD_Stat_Window_View, QD_Stat_View {
    std::vector<std::string> statuses;
    std::vector<std::string> users;
    std::vector<std::string> listed; // in the statistics
    std::atomic<int> speaker_level = -1;

    void setStatus(const char* text) override { statuses.emplace_back(text); }
    void addUserToList(const char* text) override { users.emplace_back(text); }
    void delUserFromList(const char* text) override { std::erase(users, text); }
    void activateButtons(char) override {}
    void chatMessage(QD_Member*, int, const char*, int) override {}
    void setSpeakerLevel(int level) override { speaker_level = level; }
    void setMicLevel(int) override {}
    QD_Stat_Window_View* getStatWnd() override { return this; }
    QD_Stat_View* getStatForm() override { return this; }

    void addToUsersList(const char* text) override { listed.emplace_back(text); }
    void delFromUsersList(const char* text) override { std::erase(listed, text); }
    void setAudioData(const UserData*) override {}
    void setVideoData(const UserData*) override {}
    const char* getSelectedPart() override { return ""; }
};

/// Makes windows that write down what becomes of them.
struct QD_Fake_Displays : QD_Display_Factory {
    std::vector<std::string> log;

    struct Window : QD_Display_View {
        std::vector<std::string>& log;
        explicit Window(std::vector<std::string>& all) : log(all) {}
        ~Window() override { log.emplace_back("closed"); }
        void show() override { log.emplace_back("shown"); }
        void init_surface() override { log.emplace_back("prepared"); }
        void draw(const unsigned char* picture) override
        {
            log.push_back("drew " + std::to_string(picture[0]));
        }
        void setStatistics(const char*, const char*) override { log.emplace_back("figures"); }
    };
    std::unique_ptr<QD_Display_View> make_display(const char*) override
    {
        return std::make_unique<Window>(log);
    }
};
