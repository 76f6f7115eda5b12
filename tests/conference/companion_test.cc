#include "conference/companion.h"

#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

using namespace std::chrono_literals;
using testing::HasSubstr;

namespace {

/// A conference of fake clients on 127.78.0.x; a member's name is the rule it breaks.
class Companion : public testing::Test {
protected:
    Companion()
    {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        input_.reset(ends[0]);
        keyboard_.reset(ends[1]);
        setup_.directory_ = dir_.path();
        setup_.client_ = QD_FAKE_CLIENT;
        setup_.bounds_.end_ = 60s; // nothing here may depend on it
    }

    void type(const std::string& text)
    {
        ASSERT_EQ(
            ::write(keyboard_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    /// Holds a conference of one member to its end.
    void hold(const std::string& rule, const QD_Course& course)
    {
        QD_Conference conference(setup_, out_);
        QD_Companion companion(conference, out_, input_.get());
        ASSERT_EQ(conference.join({rule, 0x7f4e0002, {rule}, {}}), 0);
        companion.run(course);
        failures_ = conference.failures();
    }

    const QD_Temp_Dir dir_;
    QD_Conference_Setup setup_;
    std::ostringstream out_;
    QD_Fd input_;
    QD_Fd keyboard_;
    int failures_ = -1;
};

TEST_F(Companion, ObeysTheKeyboard)
{
    type("join bo@127.78.0.3\nlist\nlea");
    type("ve nobody\nend\n");
    hold("anna", {});
    EXPECT_THAT(out_.str(), HasSubstr("2  bo@127.78.0.3  (starting)\n2 members\n"));
    EXPECT_THAT(out_.str(), HasSubstr("nobody: there is no member of this name\n"));
    EXPECT_THAT(out_.str(), HasSubstr("bo@127.78.0.3 has left\n"));
    EXPECT_EQ(failures_, 0);
}

TEST_F(Companion, ACommandThatTakesTooLongDoesNotHoldUpTheEnd)
{
    keyboard_.reset(); // which alone does not end it
    hold("anna", {1s, "sleep 1000", 200ms});
    EXPECT_THAT(out_.str(), HasSubstr("sleep 1000: takes too long\n"));
    EXPECT_THAT(out_.str(), HasSubstr("anna@127.78.0.2 has left\n"));
}

// The signals come from within the conference: the command before the end
// sends them, one to end and more so as not to wait for a client that will not.
TEST_F(Companion, ASignalEndsItAndFurtherOnesDoNotWait)
{
    const std::string me = std::to_string(::getpid());
    const std::string interrupt = "kill -INT " + me + "; sleep 0.2; ";
    hold("stubborn", {1s, interrupt + interrupt + interrupt + "exit 4", 60s});
    EXPECT_THAT(out_.str(), HasSubstr("stubborn@127.78.0.2 has left\n"));
}

}
