#include "tests/platform/vk/vk_test.h"

#include "platform/vk/app.h"

#include <clocale>
#include <langinfo.h>

TEST(VkApp, TakesItsOptionsSpeaksUtf8AndKeepsThePointOfNumbers)
{
    EXPECT_EQ(vk_app().left(), (std::vector<std::string> {"test", "42", "stays"}));
    EXPECT_STREQ(nl_langinfo(CODESET), "UTF-8");
    EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
}

TEST(VkApp, AMissingDisplayIsOneClearLineAndStatusOne)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    char program[] = "quendal";
    char option[] = "-display";
    char display[] = "nowhere.invalid:7";
    char* argv[] = {program, option, display, nullptr};
    int argc = 3;
    EXPECT_EXIT(VkApp("Application", &argc, argv), testing::ExitedWithCode(1),
        "^quendal: cannot open display \"nowhere.invalid:7\"\n$");
}

TEST(VkApp, AnXErrorIsReportedAndSurvived)
{
    vk_app();
    testing::internal::CaptureStderr();
    XMapWindow(theApplication->display(), 0x7ffffff);
    XSync(theApplication->display(), False);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("X error: BadWindow"), std::string::npos);
}
