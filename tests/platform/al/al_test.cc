#include "platform/al/al.h"
#include "tests/support/temp_dir.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

long parameter(long name)
{
    long pair[] = {name, -7};
    EXPECT_EQ(ALgetparams(AL_DEFAULT_DEVICE, pair, 2), 0);
    return pair[1];
}
}

TEST(Al, ParametersAreCutToTheirRangeAndRefusedOnesChangeNothing)
{
    for (long value : {-2, 0, 1, 254, 257, 255}) {
        const long pairs[] = {AL_LEFT_SPEAKER_GAIN, value, AL_RIGHT_SPEAKER_GAIN, 255 - value,
            AL_LEFT_INPUT_ATTEN, value, AL_RIGHT_INPUT_ATTEN, 7};
        ASSERT_EQ(ALsetparams(AL_DEFAULT_DEVICE, pairs, 8), 0);
        const long cut = std::clamp(value, 0L, 255L);
        EXPECT_EQ(parameter(AL_LEFT_SPEAKER_GAIN), cut);
        EXPECT_EQ(parameter(AL_RIGHT_SPEAKER_GAIN), 255 - cut);
        EXPECT_EQ(parameter(AL_LEFT_INPUT_ATTEN), cut);
        EXPECT_EQ(parameter(AL_RIGHT_INPUT_ATTEN), 7);
    }
    for (auto [wrong, value] : {std::pair<long, long>(AL_OUTPUT_RATE, 44100), {99, 0}}) {
        const long pairs[] = {AL_LEFT_SPEAKER_GAIN, 3, wrong, value};
        EXPECT_EQ(ALsetparams(AL_DEFAULT_DEVICE, pairs, 4), -1);
    }
    EXPECT_EQ(parameter(AL_LEFT_SPEAKER_GAIN), 255);
    qd_al_shutdown();
}

TEST(Al, TheEnvironmentIsReadOnceUntilAShutDown)
{
    QD_Temp_Dir dir;
    ALconfig config = ALnewconfig();
    setenv("QD_SPEAKER", "trumpet", 1);
    testing::internal::CaptureStderr();
    for (int i = 0; i < 3; ++i)
        ALcloseport(ALopenport("speaker", "w", config));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
        "QD_SPEAKER=trumpet: not one of pulse[:SINK] null file:DIR\n");
    for (const char* name : {"one", "two"}) {
        qd_al_shutdown();
        setenv("QD_SPEAKER", ("file:" + dir.file(name)).c_str(), 1);
        ALcloseport(ALopenport("speaker", "w", config));
        qd_al_shutdown();
        EXPECT_EQ(std::filesystem::file_size(dir.file(name) + "/port-1.wav"), 44u) << "complete";
    }
    ALfreeconfig(config);
}
