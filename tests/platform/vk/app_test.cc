#include "tests/platform/vk/vk_test.h"

TEST(VkApp, AMissingDisplayIsOneClearLineAndStatusOne)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    std::string words[] = {"quendal", "-display", "nowhere.invalid:7"};
    char* argv[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
    int argc = 3;
    EXPECT_EXIT(VkApp("Application", &argc, argv), testing::ExitedWithCode(1),
        "^quendal: cannot open display \"nowhere.invalid:7\"\n$");
}

TEST(VkApp, AnXErrorIsReportedAndSurvived)
{
    QD_Test_App::get();
    testing::internal::CaptureStderr();
    XMapWindow(theApplication->display(), 0x7ffffff);
    XSync(theApplication->display(), False);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("X error: BadWindow"), std::string::npos);
}
