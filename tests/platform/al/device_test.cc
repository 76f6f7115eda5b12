#include "platform/al/device.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wav.h"

#include <gmock/gmock.h>

TEST(DeviceTable, AWrongValueIsOneLineAndTheDefault)
{
    QD_Temp_Dir dir;
    qd_write_file(dir / "plain", "in the way, and no sound");
    qd_write_wav(dir / "stereo.wav", {1, 2}, 2);
    qd_write_wav(dir / "empty.wav", {});
    struct {
        std::string value;
        std::string why; // nothing is printed if empty
    } const cases[] = {
        {"QD_SPEAKER=file:" + dir / "a/new/one", ""},
        {"QD_MIC=null", "not one of pulse"},
        {"QD_MIC=tone:4000", "a frequency"},
        {"QD_MIC=file:" + dir / "stereo.wav", "it has 8000 Hz and 2"},
        {"QD_MIC=file:" + dir / "empty.wav", "there is no sound"},
        {"QD_SPEAKER=file:" + dir / "plain", "there is no such directory"},
    };
    for (const auto& c : cases) {
        const auto side = c.value[3] == 'M' ? QD_Al_Port::CAPTURE : QD_Al_Port::PLAY;
        testing::internal::CaptureStderr();
        EXPECT_TRUE(qd_make_al_device(side, c.value.substr(c.value.find('=') + 1).c_str()));
        EXPECT_THAT(testing::internal::GetCapturedStderr(),
            testing::MatchesRegex(c.why.empty() ? "" : c.value + ": " + c.why + "[^\n]*\n"));
    }
}
