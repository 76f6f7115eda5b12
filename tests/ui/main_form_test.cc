#include "tests/ui/ui_test.h"

// A meter is given what stays dark: silence is the largest value.
TEST(MainForm, LevelsBecomeUnlitUnitsOnceTheyAreDrawn)
{
    UI_Main window;
    window.form_.updateLevels();
    EXPECT_EQ(window.form_._micMeter->value(), -1) << "nothing to show before the first level";
    for (const auto& [level, value] : {std::pair(0, 110), {32767, 1}, {32768, 0}, {16384, 55},
             {297, 110}, {298, 109}, {-16384, 165}}) {
        window.form_.setMicLevel(level);
        window.form_.setSpeakerLevel(32767 - level);
        window.form_.updateLevels();
        EXPECT_EQ(window.form_._micMeter->value(), value) << level;
    }
    EXPECT_EQ(window.form_._speakerMeter->value(), -54);
}

TEST(MainForm, ACameraSetByItsResourceStartsOnceTheLocalMemberIsKnown)
{
    UI_Main window;
    window.form_.applyStartState(false);
    EXPECT_CALL(window.media_, playVideo);
    window.form_.applyStartState(true);
    window.form_.applyStartState(true);
}
