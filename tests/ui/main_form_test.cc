#include "tests/ui/ui_test.h"

// A meter is given what stays dark: silence is the largest value.
TEST(MainForm, LevelsBecomeUnlitUnitsOnceTheyAreDrawn)
{
    UI_Main window;
    window.form.updateLevels();
    EXPECT_EQ(window.form._micMeter->value(), -1) << "nothing to show before the first level";
    for (const auto& [level, value] : {std::pair(0, 110), {32767, 1}, {32768, 0}, {16384, 55},
             {297, 110}, {298, 109}, {-16384, 165}}) {
        window.form.setMicLevel(level);
        window.form.setSpeakerLevel(32767 - level);
        window.form.updateLevels();
        EXPECT_EQ(window.form._micMeter->value(), value) << level;
    }
    EXPECT_EQ(window.form._speakerMeter->value(), -54);
}

TEST(MainForm, ACameraSetByItsResourceStartsOnceTheLocalMemberIsKnown)
{
    UI_Main window;
    window.form.apply_start_state(false);
    EXPECT_CALL(window.media, playVideo);
    window.form.apply_start_state(true);
    window.form.apply_start_state(true);
}
