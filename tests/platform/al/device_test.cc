#include "platform/al/device.h"
#include "tests/support/signal_math.h"
#include "tests/support/temp_dir.h"
#include "tests/support/wav.h"

#include <algorithm>
#include <gtest/gtest.h>

TEST(DeviceTable, AWrongValueIsOneLineAndTheDefault)
{
    QD_Temp_Dir dir;
    qd_write_file(dir.file("plain"), "in the way, and no sound");
    qd_write_wav(dir.file("fast.wav"), qd_sine(440, 100), 44100);
    qd_write_wav(dir.file("stereo.wav"), qd_sine(440, 100), 8000, 2);
    qd_write_wav(dir.file("empty.wav"), {});
    struct {
        QD_Al_Port::Side side;
        std::string text;
        const char* line; // nothing is printed if empty
    } const cases[] = {
        {QD_Al_Port::CAPTURE, "", ""},
        {QD_Al_Port::CAPTURE, "tone:440.5", ""},
        {QD_Al_Port::CAPTURE, "pulse:some.source", ""},
        {QD_Al_Port::PLAY, "file:" + dir.file("a/new/one"), ""},
        {QD_Al_Port::CAPTURE, "null",
            "QD_MIC=null: not one of pulse[:SOURCE] silence tone:HZ file:X.wav\n"},
        {QD_Al_Port::CAPTURE, "tone:", "QD_MIC=tone:: a frequency"},
        {QD_Al_Port::CAPTURE, "tone:4000", "QD_MIC=tone:4000: a frequency"},
        {QD_Al_Port::CAPTURE, "tone:440x", "QD_MIC=tone:440x: a frequency"},
        {QD_Al_Port::CAPTURE, "tone:nan", "QD_MIC=tone:nan: a frequency"},
        {QD_Al_Port::CAPTURE, "silence:1", "QD_MIC=silence:1: nothing"},
        {QD_Al_Port::CAPTURE, "file:" + dir.file("none.wav"), "QD_MIC=file:"},
        {QD_Al_Port::CAPTURE, "file:" + dir.file("plain"), "QD_MIC=file:"},
        {QD_Al_Port::CAPTURE, "file:" + dir.file("fast.wav"), "QD_MIC=file:"},
        {QD_Al_Port::CAPTURE, "file:" + dir.file("stereo.wav"), "QD_MIC=file:"},
        {QD_Al_Port::CAPTURE, "file:" + dir.file("empty.wav"), "QD_MIC=file:"},
        {QD_Al_Port::PLAY, "file:" + dir.file("plain"), "QD_SPEAKER=file:"},
        {QD_Al_Port::PLAY, "file:", "QD_SPEAKER=file:: there is no such directory"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        testing::internal::CaptureStderr();
        EXPECT_TRUE(qd_make_al_device(c.side, c.text.c_str()));
        const std::string printed = testing::internal::GetCapturedStderr();
        EXPECT_EQ(printed.substr(0, std::string(c.line).size()), c.line);
        EXPECT_EQ(std::count(printed.begin(), printed.end(), '\n'), *c.line != '\0' ? 1 : 0);
    }
    EXPECT_TRUE(qd_make_al_device(QD_Al_Port::PLAY, nullptr));
}
