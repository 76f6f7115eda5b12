#include "tests/ui/ui_test.h"

#include <thread>

namespace {

Calls users(UI_Main& window) { return ui_lines(window.baseWidget(), "usersList"); }

}

TEST(MainForm, ShowsTheLabelsAndStatus)
{
    UI_Main window;
    ui_expect_labels(window.baseWidget(),
        {{"label1", "Status:"}, {"label12", "Mic"}, {"label13", "Speaker"},
            {"label2", "A/V Control"}, {"label3", "Switch:"}, {"manualToggle", "Manual"},
            {"talkToggle", "Talk"}, {"toggle", "Camera"}, {"acceptButton", "Accept"},
            {"rejectButton", "Reject"}, {"callButton", "Call"}});
    window.form_.setStatus("bernt@\xc3\xb6rsk\xff left");
    EXPECT_EQ(ui_text(window.baseWidget(), "statusText"), "bernt@\xc3\xb6rsk\xef\xbf\xbd left");
}

TEST(MainForm, RemovesTheFirstEqualUserOnly)
{
    UI_Main window;
    for (const char* user : {"a\xfe", "b", "a\xff", "b", "c"})
        window.form_.addUserToList(user);
    window.form_.delUserFromList("nobody");
    EXPECT_EQ(users(window).size(), 5u);
    window.form_.delUserFromList("b");
    window.form_.delUserFromList("a\xff"); // looks like the first line, and is the second
    EXPECT_EQ(users(window), (Calls {"a\xef\xbf\xbd", "b", "c"}));
    window.form_.delUserFromList("a\xff");
    EXPECT_EQ(users(window).size(), 3u);

    window.form_.reset(nullptr, nullptr);
    EXPECT_TRUE(users(window).empty());
    EXPECT_EQ(ui_text(window.baseWidget(), "statusText"), "Session reset completed");
}

// A meter is given what stays dark: silence is the largest value.
TEST(MainForm, LevelsOfAnyThreadBecomeUnlitUnitsOnceTheyAreDrawn)
{
    UI_Main window;
    window.form_.updateLevels();
    EXPECT_EQ(window.form_._micMeter->value(), -1) << "nothing to show before the first level";
    EXPECT_EQ(window.form_._micMeter->lit(), 0);
    for (const auto& [level, value] :
        std::initializer_list<std::pair<int, int>> {{0, 110}, {32767, 1}, {32768, 0}, {16384, 55},
            {297, 110}, {298, 109}, {-16384, 165}, {-1, 110}}) {
        window.form_.setMicLevel(level);
        window.form_.setSpeakerLevel(32767 - level);
        window.form_.updateLevels();
        EXPECT_EQ(window.form_._micMeter->value(), value) << level;
    }
    EXPECT_EQ(window.form_._speakerMeter->value(), 0);
    window.form_.setMicLevel(32767);
    EXPECT_EQ(window.form_._micMeter->value(), 110) << "drawn only when asked";

    std::thread media([&] { // levels come from there
        for (int level = 0; level < 32768; ++level) {
            window.form_.setMicLevel(level);
            window.form_.setSpeakerLevel(32767 - level);
        }
    });
    for (int i = 0; i < 100; ++i)
        window.form_.updateLevels();
    media.join();
    window.form_.updateLevels();
    EXPECT_EQ(window.form_._micMeter->value(), 1);
    EXPECT_EQ(window.form_._speakerMeter->value(), 110);
}

TEST(MainForm, ACameraSetByItsResourceStartsOnceTheLocalMemberIsKnown)
{
    UI_Main window("lit");
    window.form_.applyStartState(false);
    EXPECT_EQ(window.media_.take(), Calls {});
    window.form_.applyStartState(true);
    window.form_.applyStartState(true);
    EXPECT_EQ(window.media_.take(), Calls {"playVideo"}) << "once";

    UI_Main changed("lit"); // the user is faster
    qd_click(changed.widget("toggle"));
    changed.form_.applyStartState(true);
    EXPECT_EQ(changed.media_.take(), Calls {"stopVideo"});

    UI_Main dark;
    dark.form_.applyStartState(true);
    EXPECT_EQ(dark.media_.take(), Calls {});
}
