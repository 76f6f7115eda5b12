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

namespace {

struct Asked : VkTestWindow {
    Asked(const char* name, bool answer) : VkTestWindow(name), answer_(answer) {}
    bool okToQuit() override
    {
        std::fprintf(stderr, "%s ", name());
        return answer_;
    }
    bool answer_;
};

void quit_with_two_windows(bool newest_agrees)
{
    vk_app();
    Asked older("older", true);
    Asked newer("newer", newest_agrees);
    theApplication->quitYourself();
    std::fprintf(stderr, "stays");
    theApplication->terminate(3);
}

}

TEST(VkApp, QuittingAsksTheNewestWindowFirstAndStopsAtARefusal)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(quit_with_two_windows(true), testing::ExitedWithCode(0), "newer older $");
    EXPECT_EXIT(quit_with_two_windows(false), testing::ExitedWithCode(3), "newer stays$");
}
